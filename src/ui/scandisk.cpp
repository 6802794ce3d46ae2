#include "scandisk.h"

#include "form_scan_set.h"
#include "my_ScrollArea.h"
#include "paintblock.h"
#include "scan_complette_dlg.h"

#include "monitor/DetachedThreads.h"
#include "scan/ScanGeometry.h"
#include "scan/ScanTexts.h"
#include "scan/scan_tread.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>

scandisk::scandisk(std::shared_ptr<DriveBackend> backend, QWidget *parent)
    : QWidget(parent), m_blockMapArea(new my_ScrollArea(this)), m_worker(new scan_tread(std::move(backend), this)),
      m_form(new form_scan_set(this))
{
    m_statusLabel = m_form->label_6;
    m_speedLabel = m_form->label_11;
    auto *layout = new QGridLayout(this);
    layout->setSpacing(2);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_blockMapArea, 0, 0);
    layout->addWidget(m_form, 0, 1, Qt::AlignTop);
    resize(600, 300);
    m_blockMapArea->setBackgroundRole(QPalette::Dark);
    m_form->progressBar->hide();
    m_statusLabel->hide();
    m_speedLabel->hide();

    connect(m_form->pushButton, &QPushButton::clicked, this, &scandisk::start_scan);
    connect(m_form->pushButton_2, &QPushButton::clicked, this, &scandisk::stop_scan);
    connect(m_form->latencyBox, &QCheckBox::toggled, blockMap(), &paintblock::setLatencyColours);
    connect(m_form->spinBox, &QDoubleSpinBox::valueChanged, this, &scandisk::keepRangeOrdered);
    connect(m_form->spinBox_2, &QDoubleSpinBox::valueChanged, this, &scandisk::keepRangeOrdered);
    connect(m_worker, &scan_tread::scanedSector, this, &scandisk::showScanedSector);
    connect(m_worker, &scan_tread::scanedBlock, this, &scandisk::showScanedBlock);
    connect(m_worker, &scan_tread::scanComplette, this, &scandisk::scan_Complette);
    connect(m_worker, &scan_tread::updateProgress, this, &scandisk::update_Progress);
    connect(m_worker, &scan_tread::blockReadTime, this, [this](qint64 block, qint64 micros) {
        blockMap()->map().setReadTime(block, micros);
    });
}

scandisk::~scandisk()
{
    if (!m_worker->isRunning())
        return;
    // Nothing waits for a read that may hang in the kernel: the worker ends on its own and
    // keeps the backend alive until then.
    m_worker->stop();
    m_worker->disconnect(this);
    m_worker->setParent(nullptr);
    connect(m_worker, &QThread::finished, m_worker, &QObject::deleteLater);
    DetachedThreads::adopt(m_worker);
}

paintblock *scandisk::blockMap() const
{
    return m_blockMapArea->grid();
}

void scandisk::setDisk(int index, const QString &devicePath, qint64 sizeBytes)
{
    m_diskIndex = index;
    m_worker->setDevicePath(devicePath);
    blockMap()->map().setDiskBytes(sizeBytes);
    blockMap()->reset();
    m_blockMapArea->reflow();
    const double lastSector = double(qMax<qint64>(0, sizeBytes / ScanGeometry::kSectorBytes - 1));
    m_form->spinBox->setMaximum(lastSector);
    m_form->spinBox_2->setMaximum(lastSector);
    m_form->spinBox_2->setValue(lastSector);
}

QString scandisk::devicePath() const
{
    return m_worker->devicePath();
}

bool scandisk::isScanning() const
{
    return m_worker->isRunning();
}

void scandisk::closeScan()
{
    m_closing = true;
    m_worker->stop();
}

void scandisk::retranslate()
{
    m_form->retranslate();
}

void scandisk::keepRangeOrdered()
{
    // A range that ends before it starts has nothing to scan: the other box follows.
    if (m_form->spinBox->value() <= m_form->spinBox_2->value())
        return;
    if (sender() == m_form->spinBox)
        m_form->spinBox_2->setValue(m_form->spinBox->value());
    else
        m_form->spinBox->setValue(m_form->spinBox_2->value());
}

void scandisk::stop_scan()
{
    m_worker->stop();
}

void scandisk::start_scan()
{
    if (m_worker->isRunning())
        return;
    m_closing = false;
    emit intoLogFromScan(m_diskIndex, 1, ScanTexts::started());
    m_startTime = m_lastSpeedTime = m_now = QDateTime::currentDateTime();
    if (m_form->radioButton->isChecked())
        m_worker->setBlockSize(512);
    else if (m_form->radioButton_2->isChecked())
        m_worker->setBlockSize(65536);
    else if (m_form->radioButton_3->isChecked())
        m_worker->setBlockSize(262144);
    blockMap()->map().setFirstSector(qint64(m_form->spinBox->value()));
    blockMap()->reset();
    m_blockMapArea->reflow();
    m_worker->setFirstSector(qint64(m_form->spinBox->value()));
    m_worker->setLastSector(qint64(m_form->spinBox_2->value()));
    setRunning(true);
    m_form->progressBar->setValue(0);
    m_worker->start(QThread::InheritPriority);
}

void scandisk::setRunning(bool running)
{
    m_form->pushButton->setEnabled(!running);
    m_form->groupBox->setEnabled(!running);
    m_form->spinBox->setEnabled(!running);
    m_form->spinBox_2->setEnabled(!running);
    m_form->pushButton_2->setEnabled(running);
    m_form->progressBar->setVisible(running);
    m_statusLabel->setVisible(running);
    m_speedLabel->setVisible(running);
}

void scandisk::update_Progress(int percent)
{
    m_form->progressBar->setValue(percent);
}

void scandisk::showScanedBlock(qint64 block)
{
    blockMap()->map().setCurrentBlock(block);
    blockMap()->setCurrent(true);
    m_now = QDateTime::currentDateTime();
    // One map block is 30720 KB.
    m_speedLabel->setText(ScanTexts::readSpeed(30720.0 / double(ScanTexts::speedSeconds(m_lastSpeedTime, m_now))));
    m_lastSpeedTime = QDateTime::currentDateTime();
}

void scandisk::showScanedSector(qint64 first, qint64 last, int state)
{
    m_now = QDateTime::currentDateTime();
    // Charges one check block to the whole interval since the last mark: the page's own rule.
    const double seconds = double(ScanTexts::speedSeconds(m_lastSpeedTime, m_now));
    m_speedLabel->setText(ScanTexts::readSpeed(m_worker->blockSize() / 1024.0 / seconds));
    m_lastSpeedTime = QDateTime::currentDateTime();
    if (state != 2)
        return;
    blockMap()->map().addBadRange(first, last);
    emit intoLogFromScan(m_diskIndex, 3, ScanTexts::badSectors(first, last));
}

void scandisk::scan_Complette()
{
    const ScanSummary summary = m_worker->summary(ScanTexts::elapsedSeconds(m_startTime, QDateTime::currentDateTime()));
    blockMap()->setCurrent(false);
    setRunning(false);
    m_statusLabel->setText(ScanTexts::scanning());
    m_speedLabel->setText(QString());
    emit intoLogFromScan(m_diskIndex, 1, ScanTexts::result(summary));
    if (!m_closing)
        showResult(summary);
}

void scandisk::showResult(const ScanSummary &summary)
{
    if (summary.openFailed && !summary.stopped) {
        QMessageBox::warning(this, ScanTexts::openFailedTitle(), ScanTexts::openFailedMessage(), QMessageBox::Ok);
        return;
    }
    scan_complette_dlg dialog(this);
    dialog.setWindowTitle(ScanTexts::resultTitle(summary.stopped));
    dialog.label_5->setText(QString::number(summary.blocksScanned));
    dialog.label_6->setText(QString::number(summary.sectorsScanned));
    dialog.label_7->setText(QString::number(summary.badBlocks));
    dialog.label_8->setText(ScanTexts::elapsed(summary.elapsedSeconds));
    dialog.label_8->setToolTip(ScanTexts::elapsedTooltip(summary.elapsedSeconds));
    dialog.exec();
}

void scandisk::closeEvent(QCloseEvent *event)
{
    m_closing = true;
    m_worker->stop();
    disconnect(m_worker, &scan_tread::scanedBlock, this, &scandisk::showScanedBlock);
    event->accept();
}
