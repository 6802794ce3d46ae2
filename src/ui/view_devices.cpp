#include "view_devices.h"

#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

view_devices::view_devices(QWidget *parent) : QFrame(parent)
{
    setObjectName(QStringLiteral("view_devices"));
    setFrameShape(QFrame::StyledPanel);
    setFrameShadow(QFrame::Raised);
    setAutoFillBackground(true);
    setFixedSize(193, 70);
    auto *label = new QLabel(QStringLiteral("Looking for devices ..."), this);
    label->setAlignment(Qt::AlignCenter);
    auto *busy = new QProgressBar(this);
    busy->setRange(0, 0); // no end known: a moving bar
    busy->setTextVisible(false);
    busy->setMaximumHeight(10);
    busy->setAccessibleName(label->text());
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(busy);
    setAccessibleName(label->text());
}
