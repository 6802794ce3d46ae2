#include "SmtpTestPanel.h"

#include "health/SmtpClient.h"
#include "settings/LanguageTable.h"

#include <QDesktopServices>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace {

// What a relay is and why a provider's one is usually the way out of a blocked port 25.
const char RelayPage[] = "https://en.wikipedia.org/wiki/Smart_host";

} // namespace

SmtpTestPanel::SmtpTestPanel(std::function<SmtpParams()> params, QWidget *parent)
    : QWidget(parent)
    , m_params(std::move(params))
    , m_client(new SmtpClient(this))
    , m_test(new QPushButton(this))
    , m_relay(new QPushButton(this))
    , m_transcript(new QPlainTextEdit(this))
{
    m_test->setObjectName(QStringLiteral("smtp_test"));
    m_relay->setObjectName(QStringLiteral("smtp_relay"));
    m_transcript->setObjectName(QStringLiteral("smtp_transcript"));
    m_transcript->setReadOnly(true);
    m_transcript->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_transcript->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_transcript->setMinimumHeight(m_transcript->fontMetrics().lineSpacing() * 7);

    connect(m_test, &QPushButton::clicked, this, &SmtpTestPanel::startTest);
    connect(m_relay, &QPushButton::clicked, this,
            [] { QDesktopServices::openUrl(QUrl(QString::fromLatin1(RelayPage))); });
    connect(m_client, &SmtpClient::transcriptLine, m_transcript, &QPlainTextEdit::appendPlainText);
    connect(m_client, &SmtpClient::finished, this, &SmtpTestPanel::testFinished);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_test);
    buttons->addStretch(1);
    buttons->addWidget(m_relay);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(buttons);
    layout->addWidget(m_transcript, 1);
    retranslate();
}

void SmtpTestPanel::retranslate()
{
    m_test->setText(languageText(Lang::SmtpTestButton));
    m_relay->setText(languageText(Lang::SmtpRelayButton));
    m_transcript->setAccessibleName(languageText(Lang::SmtpTranscript));
    m_transcript->setPlaceholderText(languageText(Lang::SmtpTranscript));
}

void SmtpTestPanel::startTest()
{
    m_transcript->clear();
    emit testStarted();
    m_client->startTest(m_params());
}
