#include "KorvaneImages.h"
#include "settings/LanguageTable.h"
#include "ui/Attr_setting.h"
#include "ui/Device_dlg.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

namespace {

// The texts of the widgets of one kind below \a root, in the order they were made.
template <typename T>
QStringList textsOf(const QWidget &root)
{
    QStringList texts;
    for (const T *widget : root.findChildren<T *>())
        texts << widget->text();
    return texts;
}

} // namespace

class TestSettingsForms : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { initKorvaneImages(); }

    void attributeFormFollowsTheDirection_data()
    {
        QTest::addColumn<bool>("lowerIsWorse");
        QTest::addColumn<QString>("lastChoice");
        QTest::addColumn<QString>("moved"); // from warning 50, critical 50
        QTest::addColumn<int>("to");
        QTest::newRow("lower is worse") << true << "When the value falls below" << "spinBox_crit" << 60;
        QTest::newRow("higher is worse") << false << "When the value rises above" << "spinBox_warn" << 55;
    }
    void attributeFormFollowsTheDirection()
    {
        QFETCH(bool, lowerIsWorse);
        QFETCH(QString, moved);
        QFETCH(int, to);
        QVERIFY(LanguageTable::loadLanguage(LanguageTable::English));
        Attr_setting form(lowerIsWorse);
        QTEST(form.findChild<QAbstractButton *>(QStringLiteral("Rd_2"))->text(), "lastChoice");
        QVERIFY(!form.findChild<QLabel *>(QStringLiteral("pic1"))->pixmap().isNull());
        const QRect screen = form.screen()->geometry();
        QCOMPARE(form.pos(), QPoint(screen.width() / 2 - form.width() / 2, screen.height() / 2 - form.height() / 2));

        // The box the user moves keeps its value and the other follows (the rule is AttributeLevels').
        auto *warn = form.findChild<QSpinBox *>(QStringLiteral("spinBox_warn"));
        auto *crit = form.findChild<QSpinBox *>(QStringLiteral("spinBox_crit"));
        warn->setValue(50);
        crit->setValue(50);
        QSpinBox *movedBox = form.findChild<QSpinBox *>(moved);
        QSpinBox *otherBox = movedBox == warn ? crit : warn;
        QSignalSpy movedChanges(movedBox, &QSpinBox::valueChanged);
        movedBox->setValue(to);
        QCOMPARE(otherBox->value(), to);
        QCOMPARE(movedChanges.count(), 1);
    }

    void diskFormTextsComeFromTheLanguage_data()
    {
        QTest::addColumn<int>("language");
        QTest::addColumn<QStringList>("texts"); // title, group, check boxes, labels, combo items, radios, buttons
        QTest::newRow("English")
            << int(LanguageTable::English)
            << QStringList{"Disk Settings", "Vendor settings", "Check this device",
                           "Load/Unload cylce count contains (193)", "Power-on hours count (9)",
                           "HDA temperature (194)", "two values", "in hours", "in minutes", "in seconds",
                           "in units of 30 seconds", "one", "10xCelsius", "Apply", "Cancel"};
        QTest::newRow("German")
            << int(LanguageTable::German)
            << QStringList{"Datenträgereinstellungen", "Herstellereinstellungen", "Dieses Gerät überwachen",
                           "Lade-/Entladezyklenzähler enthält (193)", "Betriebsstundenzähler (9)",
                           "HDA-Temperatur (194)", "zwei Werte", "in Stunden", "in Minuten", "in Sekunden",
                           "in Einheiten zu 30 Sekunden", "einfach", "10×Celsius", "Übernehmen", "Abbrechen"};
    }
    void diskFormTextsComeFromTheLanguage()
    {
        QFETCH(int, language);
        QVERIFY(LanguageTable::loadLanguage(language));
        const Device_dlg form;
        QStringList shown{form.windowTitle(), form.findChild<QGroupBox *>()->title()};
        shown << textsOf<QCheckBox>(form) << textsOf<QLabel>(form);
        const QComboBox *unit = form.findChild<QComboBox *>();
        for (int i = 0; i < unit->count(); ++i)
            shown << unit->itemText(i);
        shown << textsOf<QRadioButton>(form) << textsOf<QPushButton>(form);
        QTEST(shown, "texts");
        QCOMPARE(form.twoValuesLabel()->text(), shown.at(6));
    }
};

QTEST_MAIN(TestSettingsForms)
#include "tst_settingsforms.moc"
