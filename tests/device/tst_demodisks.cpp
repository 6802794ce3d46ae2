#include "TestEnv.h"

#include "device/AtaCommandIssuer.h"
#include "device/DiskDiscovery.h"
#include "device/SmartDecoder.h"
#include "device/simulated/SimulatedBackend.h"

#include <QDir>
#include <QtTest>

// The bundled demo disks must tell the story their README promises: who is
// healthy, who is at WARNING, who heats up, who has no SMART.
namespace {

constexpr int kWarnTemperature = 55; // the default warning temperature

bool readSmart(SimulatedBackend &backend, DiskHandle handle, AtaRegisters registers, Sector &out)
{
    // When no path answers, the issuer falls back to an IDENTIFY sector made
    // from the descriptor: that is no SMART data.
    const int path = AtaCommandIssuer::issue(backend, handle, 0, registers, out);
    return path >= 0 && path != DescriptorPath;
}

struct Poll
{
    QList<quint32> failing; ///< ids at or below their threshold, or at 10 and below
    int temperature = 0;
};

QList<Poll> pollDisk(SimulatedBackend &backend, DiskRecord disk, int polls)
{
    QList<Poll> result;
    const DiskHandle h = backend.openDisk(disk.devicePath.toStdString());
    Sector data{}, thresholds{};
    if (!readSmart(backend, h, AtaCommandIssuer::smartReadData(), data)
        || !readSmart(backend, h, AtaCommandIssuer::smartReadThresholds(), thresholds))
        return result;
    SmartDecoder::applyFirstRead(disk, data, thresholds);
    for (int i = 0; i < polls; ++i) {
        if (i > 0 && readSmart(backend, h, AtaCommandIssuer::smartReadData(), data))
            SmartDecoder::applyReRead(disk, data);
        Poll p;
        p.temperature = disk.temperature;
        for (const SmartAttribute &a : disk.attributes) {
            if (!a.performance && (a.current <= a.threshold || a.current <= 10))
                p.failing << a.id;
        }
        result << p;
    }
    backend.closeDisk(h);
    return result;
}

} // namespace

class TestDemoDisks : public QObject
{
    Q_OBJECT

private slots:
    void demoSetDiscovers()
    {
        QStringList errors;
        auto backend = SimulatedBackend::load({TestEnv::demoDir(), QDir(TestEnv::demoDir()).filePath("extra")}, &errors);
        QVERIFY2(errors.isEmpty(), qPrintable(errors.join('\n')));
        QCOMPARE(backend->diskCount(), 8);

        // The USB stick is removable and not monitored.
        QStringList models, roots;
        const QList<DiskRecord> disks = getDevice_Info(*backend);
        for (const DiskRecord &d : disks) {
            models << d.model;
            QStringList own;
            for (const VolumeRecord &v : d.volumes)
                own << v.rootPath;
            roots << own.join(',');
        }
        QCOMPARE(models, (QStringList{"Halvard HX1000-7K2", "Norrik NV500 SSD", "Halvard HX2000-5K4",
                                      "Brenner BX3000 NAS", "Corlin CF64 Industrial", "Halvard HX320-7K1",
                                      "Velmar VT250 RAID Member"}));
        QCOMPARE(roots, (QStringList{"C:\\,D:\\", "E:\\", "F:\\", "G:\\,1:\\", "H:\\", "", ""}));
        QCOMPARE(disks[0].capacityBytes, quint64(1000204886016));
        QCOMPARE(disks[6].serial, QStringLiteral("VT250R0417")); // from the descriptor alone
    }

    void demoStory()
    {
        auto backend = SimulatedBackend::load({TestEnv::demoDir()}, nullptr);
        const QList<DiskRecord> disks = getDevice_Info(*backend);
        QCOMPARE(disks.size(), 5);
        const int polls = 12;

        for (int i : {0, 1}) {
            for (const Poll &p : pollDisk(*backend, disks[i], polls)) {
                QVERIFY2(p.failing.isEmpty(), qPrintable(disks[i].model));
                QVERIFY(p.temperature > 0 && p.temperature < kWarnTemperature);
            }
        }
        QCOMPARE(pollDisk(*backend, disks[2], 1).value(0).failing, QList<quint32>{5});

        // The hot disk starts below the warning temperature, passes it within a
        // few polls and stays between 55 and 60 C.
        const QList<Poll> hot = pollDisk(*backend, disks[3], polls);
        QCOMPARE(hot.size(), polls);
        QVERIFY(hot.first().temperature < kWarnTemperature);
        for (int i = 4; i < polls; ++i) {
            QVERIFY(hot[i].temperature >= kWarnTemperature && hot[i].temperature <= 60);
            QVERIFY(hot[i].failing.isEmpty());
        }

        QVERIFY(pollDisk(*backend, disks[4], 1).isEmpty()); // no SMART
    }
};

QTEST_GUILESS_MAIN(TestDemoDisks)
#include "tst_demodisks.moc"
