// The Linux backend against a made-up kernel: system calls answered by a
// fake drive, a sysfs tree and a mount table in a temporary folder.

#include "device/AtaCommandIssuer.h"
#include "device/DeviceDescriptor.h"
#include "device/linux/LinuxBackend.h"
#include "device/linux/LinuxSystem.h"

#include <QtTest>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/fs.h>
#include <linux/hdreg.h>
#include <map>
#include <optional>
#include <scsi/sg.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

// How one access path answers an ATA command.
enum class Answer {
    Data,        // GOOD status, the sector transferred
    ShortData,   // GOOD status, nothing transferred
    Registers,   // CHECK CONDITION, descriptor sense holding the task file
    NoRegisters, // GOOD status although CK_COND asked for the registers
    Illegal,     // ILLEGAL REQUEST, invalid opcode (fixed sense)
    Refused,     // the ioctl fails: no capability
    Unchanged,   // HDIO_DRIVE_TASK leaves the block as sent
};

// One disk behind the fake system calls. Its task file reports "threshold
// exceeded" (F4/2C), so that registers passed back as sent (4F/C2) show.
struct FakeDrive
{
    Answer path[3] = {Answer::Data, Answer::Data, Answer::Data};
    Sector sector{};
    Bytes inquiry;
    std::optional<Bytes> ataPage; // VPD 0x89 over SG_IO
    std::uint64_t bytes = 500107862016ULL;
    std::uint8_t lastOpcode = 0;
    Bytes lastDriveCmd;
};

Bytes fixedSenseIllegalRequest()
{
    Bytes sense(18, 0);
    sense[0] = 0x70;
    sense[2] = 0x05;
    sense[7] = 10;
    sense[12] = 0x20;
    return sense;
}

class FakeSystem : public LinuxSystem
{
public:
    std::map<std::string, int> openResult; // fd, or -errno; others do not exist
    std::map<int, FakeDrive> drives;       // by fd
    std::vector<int> openFlags;
    std::vector<int> closed;
    Bytes media;                           // what pread reads, at most 1536 bytes a call
    bool failReads = false;

    int open(const std::string &path, int flags) override
    {
        openFlags.push_back(flags);
        const auto it = openResult.find(path);
        if (it == openResult.end())
            return -ENOENT;
        m_direct[it->second] = flags & O_DIRECT;
        return it->second;
    }

    void close(int fd) override { closed.push_back(fd); }

    ssize_t pread(int fd, void *buffer, std::size_t length, off_t offset) override
    {
        if (failReads)
            return -EIO;
        if (m_direct[fd] && reinterpret_cast<std::uintptr_t>(buffer) % 512 != 0)
            return -EINVAL;
        const std::size_t n = std::min({length, std::size_t(1536), media.size() - std::min(media.size(), std::size_t(offset))});
        std::memcpy(buffer, media.data() + offset, n);
        return ssize_t(n);
    }

    int ioctl(int fd, unsigned long request, void *arg) override
    {
        FakeDrive &d = drives.at(fd);
        switch (request) {
        case HDIO_GETGEO: {
            auto *g = static_cast<hd_geometry *>(arg);
            g->heads = 255;
            g->sectors = 63;
            g->cylinders = std::uint16_t(d.bytes / (255 * 63 * 512)); // wraps, as the kernel's does
            return 0;
        }
        case BLKSSZGET:
            *static_cast<int *>(arg) = 512;
            return 0;
        case BLKGETSIZE64:
            *static_cast<std::uint64_t *>(arg) = d.bytes;
            return 0;
        case SG_GET_VERSION_NUM:
            *static_cast<int *>(arg) = 30527;
            return 0;
        case SG_IO:
            return scsi(d, *static_cast<sg_io_hdr_t *>(arg));
        case HDIO_DRIVE_CMD: {
            auto *args = static_cast<std::uint8_t *>(arg);
            d.lastDriveCmd.assign(args, args + 4);
            if (d.path[1] == Answer::Refused)
                return -EACCES;
            // libata leaves these four bytes as sent; make sure nobody reads them.
            std::memset(args, 0xFF, 4);
            std::memcpy(args + 4, d.sector.data(), d.sector.size());
            return 0;
        }
        case HDIO_DRIVE_TASK: {
            auto *task = static_cast<std::uint8_t *>(arg);
            if (d.path[1] == Answer::Refused)
                return -EACCES;
            if (d.path[1] != Answer::Unchanged) {
                const std::uint8_t reply[7] = {0x50, 0, 0, 0, 0xF4, 0x2C, 0xA0};
                std::memcpy(task, reply, sizeof reply);
            }
            return 0;
        }
        }
        return -ENOTTY;
    }

private:
    std::map<int, bool> m_direct;

    static void checkCondition(sg_io_hdr_t &io, const Bytes &sense)
    {
        io.status = 0x02;
        io.driver_status = 0x08;
        io.sb_len_wr = std::uint8_t(std::min<std::size_t>(sense.size(), io.mx_sb_len));
        std::memcpy(io.sbp, sense.data(), io.sb_len_wr);
        io.resid = int(io.dxfer_len);
    }

    static void transfer(sg_io_hdr_t &io, const Bytes &data)
    {
        const std::size_t n = std::min<std::size_t>(data.size(), io.dxfer_len);
        std::memcpy(io.dxferp, data.data(), n);
        io.resid = int(io.dxfer_len - n);
    }

    int scsi(FakeDrive &d, sg_io_hdr_t &io)
    {
        d.lastOpcode = io.cmdp[0];
        if (io.cmdp[0] == 0x12) {
            const bool vpd = io.cmdp[1] & 1;
            const std::optional<Bytes> page = !vpd ? std::optional(d.inquiry) : io.cmdp[2] == 0x89 ? d.ataPage : std::nullopt;
            if (page && !page->empty())
                transfer(io, *page);
            else
                checkCondition(io, fixedSenseIllegalRequest());
            return 0;
        }
        switch (d.path[io.cmdp[0] == 0x85 ? 0 : 2]) {
        case Answer::Refused:
            return -EPERM;
        case Answer::Illegal:
            checkCondition(io, fixedSenseIllegalRequest());
            return 0;
        case Answer::Data:
            transfer(io, Bytes(d.sector.begin(), d.sector.end()));
            return 0;
        case Answer::Registers:
            checkCondition(io, {0x72, 0x01, 0x00, 0x1D, 0, 0, 0, 14, 0x09, 0x0C, 0, 0x00, 0, 0x00, 0, 0x00, 0, 0xF4,
                                0, 0x2C, 0xA0, 0x50});
            return 0;
        default:
            io.resid = int(io.dxfer_len);
            return 0;
        }
    }
};

void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    QVERIFY2(f.open(QIODevice::WriteOnly), qPrintable(path));
    f.write(content);
}

Bytes inquiryData(const char *vendor, const char *product)
{
    Bytes d(36, ' ');
    d[0] = d[1] = 0;
    std::memcpy(d.data() + 8, vendor, std::min<std::size_t>(strlen(vendor), 8));
    std::memcpy(d.data() + 16, product, std::min<std::size_t>(strlen(product), 16));
    return d;
}

Bytes ataInformationPage(const std::string &model, const std::string &serial)
{
    Bytes page(572, 0);
    page[1] = 0x89;
    page[2] = 0x02;
    page[3] = 0x38;
    auto put = [&](int word, int words, const std::string &text) {
        for (int i = 0; i < 2 * words; ++i)
            page[std::size_t(60 + 2 * word + (i ^ 1))] = std::uint8_t(i < int(text.size()) ? text[std::size_t(i)] : ' ');
    };
    put(27, 20, model);
    put(10, 10, serial);
    put(23, 4, "05.01D05");
    return page;
}

} // namespace

Q_DECLARE_METATYPE(Answer)

class TestLinuxBackend : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    std::shared_ptr<FakeSystem> m_system;
    std::unique_ptr<LinuxBackend> m_backend;

    QString sys(const QString &relative) const { return m_dir.filePath(QStringLiteral("sys/") + relative); }

    void addBlock(const QString &name, const QString &dev, bool removable = false)
    {
        const QString dir = name.startsWith(QStringLiteral("devices/")) ? name : QStringLiteral("block/") + name;
        writeFile(sys(dir + QStringLiteral("/dev")), dev.toLatin1() + '\n');
        if (name.count(QLatin1Char('/')) == 1)
            writeFile(sys(dir + QStringLiteral("/partition")), name.section(QLatin1Char('/'), 1).mid(3).toLatin1());
        else
            writeFile(sys(dir + QStringLiteral("/removable")), removable ? "1\n" : "0\n");
    }

    FakeDrive &addDrive(const std::string &path, int fd)
    {
        m_system->openResult[path] = fd;
        FakeDrive &d = m_system->drives[fd];
        for (std::size_t i = 0; i < d.sector.size(); ++i)
            d.sector[i] = std::uint8_t(i + 7);
        d.inquiry = inquiryData("ATA", "WDC WD5000AAKS-0");
        d.ataPage = ataInformationPage("WDC WD5000AAKS-00V1A0", "WD-WCAWF1234567");
        return d;
    }

    DiskHandle open(const std::string &path)
    {
        const DiskHandle h = m_backend->openDisk(path);
        QTest::qVerify(h != kNoHandle, "openDisk", path.c_str(), __FILE__, __LINE__);
        return h;
    }

    std::pair<std::string, std::string> productAndSerial(DiskHandle handle)
    {
        std::uint8_t buffer[4096] = {};
        const int n = m_backend->deviceDescriptor(handle, buffer, int(sizeof buffer));
        QTest::qVerify(DeviceDescriptor::stringAt(buffer, n, DeviceDescriptor::kVendorOffsetField).empty(), "vendor",
                       "an ATA disk has no vendor", __FILE__, __LINE__);
        return {DeviceDescriptor::stringAt(buffer, n, DeviceDescriptor::kProductOffsetField),
                DeviceDescriptor::stringAt(buffer, n, DeviceDescriptor::kSerialOffsetField)};
    }

private slots:
    void init()
    {
        QDir(m_dir.path()).removeRecursively();
        // sda fixed with three partitions, sdb removable with one, sdc and sdd
        // without partitions (sdc mounted whole), loop0 a virtual device.
        addBlock(QStringLiteral("sda"), QStringLiteral("8:0"));
        addBlock(QStringLiteral("sda/sda10"), QStringLiteral("8:10"));
        addBlock(QStringLiteral("sda/sda2"), QStringLiteral("8:2"));
        addBlock(QStringLiteral("sda/sda1"), QStringLiteral("8:1"));
        addBlock(QStringLiteral("sdb"), QStringLiteral("8:16"), true);
        addBlock(QStringLiteral("sdb/sdb1"), QStringLiteral("8:17"));
        addBlock(QStringLiteral("sdc"), QStringLiteral("8:32"));
        addBlock(QStringLiteral("sdd"), QStringLiteral("8:48"));
        addBlock(QStringLiteral("devices/virtual/block/loop0"), QStringLiteral("7:0"));
        QVERIFY(QFile::link(sys(QStringLiteral("devices/virtual/block/loop0")), sys(QStringLiteral("block/loop0"))));
        // A btrfs subvolume is listed before the whole file system of the same
        // disk; blanks in a mount point are escaped as the kernel does.
        writeFile(m_dir.filePath(QStringLiteral("mountinfo")),
                  "21 1 8:2 / / rw - ext4 /dev/sda2 rw\n"
                  "22 21 0:40 /@data /srv/data rw - btrfs /dev/sda1 rw\n"
                  "23 21 0:40 / /mnt/all\\040of\\040it rw shared:5 - btrfs /dev/sda1 rw\n"
                  "24 21 8:32 / /data rw - xfs /dev/sdc rw\n"
                  "25 21 8:17 / /media/stick rw - vfat /dev/sdb1 rw\n"
                  "26 21 7:0 / /snap/core rw - squashfs /dev/loop0 ro\n");

        m_system = std::make_shared<FakeSystem>();
        LinuxBackend::Environment env;
        env.system = m_system;
        env.sysRoot = sys(QString()).toStdString();
        env.mountInfo = m_dir.filePath(QStringLiteral("mountinfo")).toStdString();
        m_backend = std::make_unique<LinuxBackend>(env);
    }

    void openingAndAccessProblems()
    {
        addDrive("/dev/sda", 5);
        m_system->openResult["/dev/sdb"] = -EACCES;
        QCOMPARE(m_backend->diskPath(25), std::string("/dev/sdz"));

        const DiskHandle h = open("/dev/sda");
        QCOMPARE(m_system->openFlags.back() & (O_ACCMODE | O_CLOEXEC), O_RDWR | O_CLOEXEC);
        QCOMPARE(m_backend->openDisk("/dev/sdb"), kNoHandle);
        QCOMPARE(m_backend->openDisk("/dev/sdc"), kNoHandle); // not there: nothing to report
        std::vector<std::string> problems = m_backend->accessProblems();
        QCOMPARE(problems.size(), std::size_t(1));
        QVERIFY(problems[0].rfind("/dev/sdb: ", 0) == 0);
        QVERIFY(problems[0].find(std::strerror(EACCES)) != std::string::npos);

        // Without CAP_SYS_ADMIN the kernel refuses HDIO_DRIVE_CMD; the SMART
        // interface then sends the same ATA PASS-THROUGH (16) itself.
        FakeDrive &drive = m_system->drives[5];
        drive.path[1] = Answer::Refused;
        AtaExchange x;
        x.registers = AtaCommandIssuer::smartReadData();
        x.dataIn = true;
        x.driverError = 0xEE;
        QVERIFY(m_backend->ataCommand(h, SmartIoctlPath, 0, x));
        QVERIFY(x.data == drive.sector);
        QCOMPARE(x.driverError, 0);
        QCOMPARE(drive.lastOpcode, 0x85);
        QCOMPARE(m_backend->accessProblems().size(), std::size_t(1));

        // Without CAP_SYS_RAWIO as well: one line for the disk, though
        // ATA PASS-THROUGH (12), open to writers, still gets through.
        drive.path[0] = Answer::Refused;
        QVERIFY(!m_backend->ataCommand(h, AtaPassThroughPath, 0, x));
        QVERIFY(!m_backend->ataCommand(h, SmartIoctlPath, 0, x));
        QVERIFY(m_backend->ataCommand(h, IdePassThroughPath, 0, x));
        problems = m_backend->accessProblems();
        QCOMPARE(problems.size(), std::size_t(2));
        QVERIFY(problems[0].rfind("/dev/sda: ", 0) == 0);
        QVERIFY(problems[0].find(std::strerror(EPERM)) != std::string::npos);

        m_backend->closeDisk(h);
        QCOMPARE(m_system->closed, std::vector<int>{5});
        QVERIFY(!m_backend->ataCommand(h, AtaPassThroughPath, 0, x)); // a closed handle is unknown
    }

    void geometryNumberAndVersion()
    {
        addDrive("/dev/sda", 5);
        addDrive("/dev/sdb", 6);
        const DiskHandle a = open("/dev/sda");
        const DiskHandle b = open("/dev/sdb");

        DiskGeometry g;
        QVERIFY(m_backend->geometry(a, g));
        QCOMPARE(g.mediaType, kFixedMedia);
        QCOMPARE(g.cylinders * g.tracksPerCylinder * g.sectorsPerTrack, std::uint64_t(60801 * 255 * 63));
        QCOMPARE(g.bytesPerSector, 512u);
        QVERIFY(m_backend->geometry(b, g));
        QCOMPARE(g.mediaType, 11u); // sysfs says removable

        std::int32_t number = -1;
        QVERIFY(m_backend->deviceNumber(b, number));
        QCOMPARE(number, 1);
        std::uint8_t version = 0, revision = 0;
        QVERIFY(m_backend->smartVersion(a, version, revision));
        QCOMPARE(std::pair(int(version), int(revision)), std::pair(3, 5)); // sg 3.5.27
    }

    void accessPaths_data()
    {
        QTest::addColumn<bool>("returnStatus");
        QTest::addColumn<Answer>("path0");
        QTest::addColumn<Answer>("path1");
        QTest::addColumn<Answer>("path2");
        QTest::addColumn<int>("expectedPath");

        QTest::newRow("read: pass-through 16") << false << Answer::Data << Answer::Data << Answer::Data << 0;
        QTest::newRow("read: nothing moved, HDIO") << false << Answer::ShortData << Answer::Data << Answer::Data << 1;
        QTest::newRow("read: pass-through 12") << false << Answer::Illegal << Answer::Refused << Answer::Data << 2;
        QTest::newRow("status: sense registers") << true << Answer::Registers << Answer::Data << Answer::Data << 0;
        QTest::newRow("status: CK_COND ignored, HDIO task")
            << true << Answer::NoRegisters << Answer::Data << Answer::Registers << 1;
        QTest::newRow("status: task block unchanged")
            << true << Answer::Refused << Answer::Unchanged << Answer::Registers << 2;
    }

    void accessPaths()
    {
        QFETCH(bool, returnStatus);
        QFETCH(Answer, path0);
        QFETCH(Answer, path1);
        QFETCH(Answer, path2);
        QFETCH(int, expectedPath);
        FakeDrive &drive = addDrive("/dev/sda", 5);
        drive.path[0] = path0;
        drive.path[1] = path1;
        drive.path[2] = path2;

        AtaRegisters registers = returnStatus ? AtaCommandIssuer::smartReturnStatus() : AtaCommandIssuer::smartReadData();
        Sector data{};
        QCOMPARE(AtaCommandIssuer::issue(*m_backend, open("/dev/sda"), 0, registers, data), expectedPath);
        if (returnStatus)
            QCOMPARE(registers.cylinderLow * 256 + registers.cylinderHigh, 0xF42C);
        else
            QVERIFY(data == drive.sector);
        if (expectedPath == 1 && !returnStatus)
            QCOMPARE(drive.lastDriveCmd, (Bytes{0xB0, 0x01, 0xD0, 0x01})); // command, sector number, features, count
        if (expectedPath == 2)
            QCOMPARE(drive.lastOpcode, 0xA1);
    }

    void descriptorIdentity()
    {
        // Behind libata: the full model and serial from the ATA Information page.
        addDrive("/dev/sda", 5);
        QCOMPARE(productAndSerial(open("/dev/sda")),
                 std::pair(std::string("WDC WD5000AAKS-00V1A0"), std::string("WD-WCAWF1234567")));

        // The page refused over SG_IO: the kernel's copy in sysfs serves.
        FakeDrive &b = addDrive("/dev/sdb", 6);
        const Bytes page = ataInformationPage("ST2000DM008-2FR102 LONG MODEL NAME", "ZFL0ABCD");
        b.ataPage.reset();
        writeFile(sys(QStringLiteral("block/sdb/device/vpd_pg89")),
                  QByteArray(reinterpret_cast<const char *>(page.data()), int(page.size())));
        QCOMPARE(productAndSerial(open("/dev/sdb")),
                 std::pair(std::string("ST2000DM008-2FR102 LONG MODEL NAME"), std::string("ZFL0ABCD")));

        // No INQUIRY at all: the strings sysfs keeps.
        FakeDrive &d = addDrive("/dev/sdd", 8);
        d.inquiry.clear();
        d.ataPage.reset();
        writeFile(sys(QStringLiteral("block/sdd/device/model")), "HUS724040ALE640 \n");
        QCOMPARE(productAndSerial(open("/dev/sdd")).first, std::string("HUS724040ALE640"));
    }

    void volumes()
    {
        const std::vector<std::string> expected = {"/dev/sda1", "/dev/sda2", "/dev/sda10", "/dev/sdb1", "/dev/sdc"};
        QCOMPARE(m_backend->volumeNames(), expected);
        QVERIFY(m_backend->isFixedVolume("/dev/sda10"));
        QVERIFY(m_backend->isFixedVolume("/dev/sdc"));
        QVERIFY(!m_backend->isFixedVolume("/dev/sdb1"));
        QVERIFY(!m_backend->isFixedVolume("/dev/loop0"));

        std::int32_t number = -1;
        QVERIFY(m_backend->volumeDeviceNumber("/dev/sda10", number));
        QCOMPARE(number, 0);
        QVERIFY(m_backend->volumeDeviceNumber("/dev/sdc", number));
        QCOMPARE(number, 2);

        // Whole file systems take their roots before subvolumes; removable
        // and virtual volumes have none.
        std::vector<std::pair<std::string, std::string>> roots;
        for (const MountPoint &m : m_backend->mountPoints())
            roots.emplace_back(m.root, m.volumeName);
        const std::vector<std::pair<std::string, std::string>> want = {
            {"/", "/dev/sda2"}, {"/mnt/all of it", "/dev/sda1"}, {"/data", "/dev/sdc"}, {"/srv/data", "/dev/sda1"}};
        QCOMPARE(roots, want);

        VolumeSpace space;
        QVERIFY(m_backend->volumeSpace("/dev/sda2", space)); // mounted on "/", which every machine has
        QVERIFY(space.bytesPerSector * space.sectorsPerCluster > 0);
        QVERIFY(space.totalClusters >= space.freeClusters && space.totalClusters > 0);
        QVERIFY(!m_backend->volumeSpace("/dev/sda10", space)); // not mounted
    }

    void sectorReads()
    {
        m_system->openResult["/dev/sda"] = 9;
        m_system->media.resize(10240);
        for (std::size_t i = 0; i < m_system->media.size(); ++i)
            m_system->media[i] = std::uint8_t(i * 31);
        const DiskHandle h = m_backend->openForRead("/dev/sda", true);
        QCOMPARE(m_system->openFlags.back() & (O_ACCMODE | O_DIRECT), O_RDONLY | O_DIRECT);

        // Short reads are continued; a buffer off the block boundary still
        // works with direct I/O.
        alignas(4096) static std::uint8_t buffer[4096 + 1];
        QCOMPARE(m_backend->readAt(h, 512, buffer + 1, 4096), std::int64_t(4096));
        QVERIFY(std::memcmp(buffer + 1, m_system->media.data() + 512, 4096) == 0);
        QCOMPARE(m_backend->readAt(h, 8192, buffer, 4096), std::int64_t(2048)); // the end of the disk
        m_system->failReads = true;
        QCOMPARE(m_backend->readAt(h, 0, buffer, 512), std::int64_t(-1));
    }
};

QTEST_GUILESS_MAIN(TestLinuxBackend)
#include "tst_linuxbackend.moc"
