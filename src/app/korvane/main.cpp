#include "ui/MainWindow.h"
#include "ui/TrayController.h"
#include "ui/UiFont.h"

#include "KorvaneImages.h"
#include "device/BackendFactory.h"
#include "monitor/SignalWatcher.h"
#include "settings/AppSettings.h"
#include "settings/AppVersion.h"
#include "settings/DetailLog.h"
#include "settings/FreeEdition.h"
#include "settings/LanguageTable.h"
#include "settings/ProcessCount.h"
#include "settings/RegisteredFolder.h"
#include "settings/SettingsStore.h"
#include "settings/StartupOptions.h"

#ifdef Q_OS_WIN
#include "settings/windows/ModuleFolder.h"
#include "settings/windows/RunKey.h"
#include "settings/windows/WinPeKey.h"
#endif

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QScreen>
#include <QStyle>
#include <QStyleFactory>
#include <QTimer>

namespace {

void tell(QMessageBox::Icon icon, const QString &text)
{
    QMessageBox box(icon, QStringLiteral("Korvane"), text, QMessageBox::Ok);
    box.exec();
}

// The language comes before anything is shown; false when the program cannot go on.
bool loadLanguageAtStartup()
{
    const auto result = LanguageTable::loadAtStartup(appSettings().LanguageType);
    if (result == LanguageTable::StartupResult::Loaded)
        return true;
    tell(QMessageBox::Warning, LanguageTable::startupMessage(result));
    return result != LanguageTable::StartupResult::Failed;
}

// Centred on the primary screen at 900 x 600, shown or left in the tray.
void placeWindow(MainWindow &window, const QString &title)
{
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        window.move(area.x() + area.width() / 2 - 450, area.y() + area.height() / 2 - 300);
    }
    window.resize(900, 600);
    window.setWindowTitle(title);
    if (appSettings().showMainWindow)
        window.show();
    else if (!window.tray()->isTrayAvailable())
        window.showMinimized(); // no tray to come back from: start minimised instead of invisible
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Korvane"));
    QApplication::setApplicationVersion(AppVersion::text());
    QGuiApplication::setDesktopFileName(QStringLiteral("korvane"));
    initKorvaneImages();
    UiFont::substituteWindowsFaces();

    AppSettings &settings = appSettings();
#ifdef Q_OS_WIN
    settings.winPEMode = WinPeKey::isSet();
    const QString processName = QString::fromWCharArray(RunKey::executableName(settings.is64BitBuild));
#else
    settings.winPEMode = false; // a Windows boot-disk matter; never so here
    const QString processName = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
#endif
    if (!settings.winPEMode && isProcessRunning(processName))
        return 1;
    settings.executableDirectory.clear();
    setDefaults(QStyleFactory::keys(), QApplication::style()->name());
    applyArguments(settings, QCoreApplication::arguments());
#ifdef Q_OS_WIN
    settings.executableDirectory = QString::fromStdWString(ModuleFolder::lowByteDirectory());
#else
    settings.executableDirectory = QDir::toNativeSeparators(QCoreApplication::applicationDirPath()) + QDir::separator();
#endif
    if (!settings.showMainWindow)
        settings.executableDirectory = RegisteredFolder::atHiddenStart(settings.executableDirectory, settings.is64BitBuild);

    QString error;
    if (!SettingsStore::instance().useHomeFromEnvironment(&error)) {
        tell(QMessageBox::Critical, error);
        return 1;
    }
    if (!loadLanguageAtStartup())
        return 0;
    QString message;
    SettingsStore::instance().load(&message);
    if (!message.isEmpty())
        tell(QMessageBox::Warning, message);
    if (settings.detailLogEnabled)
        writeDetailLog(true, QStringLiteral("Start app"));

    QStringList backendErrors;
    std::shared_ptr<DriveBackend> backend = createDriveBackend({}, &backendErrors);
    if (!backendErrors.isEmpty())
        tell(QMessageBox::Warning, backendErrors.join(QLatin1Char('\n')));

    const FreeEdition licence;
    QApplication::setQuitOnLastWindowClosed(false); // a dialog closing while the window hides in the tray must not end us
    MainWindow window(backend, licence);
    QObject::connect(&window, &MainWindow::closeApp, &app, &QCoreApplication::quit, Qt::QueuedConnection);
    SignalWatcher stopSignals;
    QObject::connect(&stopSignals, &SignalWatcher::stopRequested, &window, &MainWindow::trayClose);
    QObject::connect(&app, &QGuiApplication::commitDataRequest, &window, &MainWindow::trayClose);
    placeWindow(window, windowTitle(licence));

    const int code = QApplication::exec();
    window.finishSession();
    return code;
}
