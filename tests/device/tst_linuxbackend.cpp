// The Linux backend against a made-up kernel: system calls answered by a
// fake drive, a sysfs tree and a mount table in a temporary folder.

#include "device/AtaCommandIssuer.h"
#include "device/DeviceDescriptor.h"
#include "device/linux/LinuxBackend.h"
#include "device/linux/LinuxSystem.h"

#include <QtTest>

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/fs.h>
#include <linux/hdreg.h>
#include <map>
#include <numeric>
#include <scsi/sg.h>

namespace {

using Pages = std::map<int, QByteArray>;      // INQUIRY replies by VPD page; -1 the standard data
using Files = std::map<QString, QByteArray>;  // files of the disk's sysfs device folder

// How one access path answers an ATA command: the sector; GOOD status but
// nothing moved; CHECK CONDITION with the task file in descriptor sense; GOOD
// status although CK_COND asked for the registers; ILLEGAL REQUEST in fixed
// sense; the ioctl refused for want of a capability; HDIO_DRIVE_TASK leaving
// the block as sent.
enum class Answer : std::uint8_t { Data, ShortData, Registers, NoRegisters, Illegal, Refused, Unchanged };
using Paths = std::array<Answer, 3>; // by access path

// One 2 TB disk behind the fake system calls. Its task file reports
// "threshold exceeded" (F4/2C), so that registers passed back as sent (4F/C2) show.
struct FakeDrive
{
    Paths path = {Answer::Data, Answer::Data, Answer::Data};
    Sector sector{};
    Pages pages;
};

class FakeSystem : public LinuxSystem
{
public:
    std::map<std::string, int> openResult; // fd, or -errno; others do not exist
    std::map<int, FakeDrive> drives;       // by fd
    int lastFlags = 0;
    int closed = -1;
    QByteArray media;                      // what pread reads, at most 1536 bytes a call
    bool failReads = false;
    bool refuseDiscard = false;            // as a file system without splicing does
    int discards = 0;

    int open(const std::string &path, int flags) override
    {
        lastFlags = flags;
        const auto it = openResult.find(path);
        return it == openResult.end() ? -ENOENT : it->second;
    }

    void close(int fd) override { closed = fd; }

    ssize_t pread(int, void *buffer, std::size_t length, off_t offset) override
    {
        // O_DIRECT refuses buffers off the block boundary.
        if (failReads || ((lastFlags & O_DIRECT) && reinterpret_cast<std::uintptr_t>(buffer) % 512 != 0))
            return failReads ? -EIO : -EINVAL;
        const QByteArray part = media.mid(offset, qsizetype(std::min<std::size_t>(length, 1536)));
        std::memcpy(buffer, part.constData(), std::size_t(part.size()));
        return part.size();
    }

    ssize_t discard(int, std::size_t length, off_t offset) override
    {
        if (refuseDiscard)
            return -EINVAL;
        ++discards;
        return failReads ? -EIO : qMin<qsizetype>(qsizetype(std::min<std::size_t>(length, 1536)), qMax<qsizetype>(media.size() - offset, 0));
    }

    int ioctl(int fd, unsigned long request, void *arg) override
    {
        FakeDrive &d = drives.at(fd);
        switch (request) {
        case HDIO_GETGEO:
            *static_cast<hd_geometry *>(arg) = {255, 63, std::uint16_t(243201), 0}; // wrapped, as the kernel's are
            return 0;
        case BLKSSZGET:
            *static_cast<int *>(arg) = 512;
            return 0;
        case BLKGETSIZE64:
            *static_cast<std::uint64_t *>(arg) = 2000398934016ULL;
            return 0;
        case SG_IO:
            return scsi(d, *static_cast<sg_io_hdr_t *>(arg));
        case HDIO_DRIVE_CMD:
            if (d.path[1] == Answer::Refused)
                return -EACCES;
            // libata leaves these four bytes as sent; make sure nobody reads them.
            std::memset(arg, 0xFF, 4);
            std::memcpy(static_cast<std::uint8_t *>(arg) + 4, d.sector.data(), d.sector.size());
            return 0;
        case HDIO_DRIVE_TASK:
            if (d.path[1] == Answer::Refused)
                return -EACCES;
            if (d.path[1] != Answer::Unchanged)
                std::memcpy(arg, "\x50\0\0\0\xF4\x2C\xA0", 7);
            return 0;
        }
        return -ENOTTY;
    }

private:
    static int scsi(const FakeDrive &d, sg_io_hdr_t &io)
    {
        const QByteArray illegal("\x70\0\x05\0\0\0\0\x0A\0\0\0\0\x20\0\0\0\0\0", 18);
        QByteArray data, sense;
        if (io.cmdp[0] == 0x12) {
            const auto page = d.pages.find(io.cmdp[1] & 1 ? io.cmdp[2] : -1);
            data = page != d.pages.end() ? page->second : QByteArray();
            sense = data.isEmpty() ? illegal : QByteArray();
        } else {
            const Answer answer = d.path[io.cmdp[0] == 0x85 ? 0 : 2];
            if (answer == Answer::Refused)
                return -EPERM;
            if (answer == Answer::Data)
                data = QByteArray(reinterpret_cast<const char *>(d.sector.data()), 512);
            else if (answer == Answer::Illegal)
                sense = illegal;
            else if (answer == Answer::Registers)
                sense = QByteArray("\x72\x01\0\x1D\0\0\0\x0E\x09\x0C\0\0\0\0\0\0\0\xF4\0\x2C\xA0\x50", 22);
        }
        const unsigned n = std::min(unsigned(data.size()), io.dxfer_len);
        if (n)
            std::memcpy(io.dxferp, data.constData(), n);
        io.resid = int(io.dxfer_len - n);
        io.status = sense.isEmpty() ? 0 : 0x02;
        io.driver_status = sense.isEmpty() ? 0 : 0x08;
        io.sb_len_wr = std::uint8_t(std::min(unsigned(sense.size()), unsigned(io.mx_sb_len)));
        std::memcpy(io.sbp, sense.constData(), io.sb_len_wr);
        return 0;
    }
};

void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    QVERIFY2(f.open(QIODevice::WriteOnly), qPrintable(path));
    f.write(content);
}

QByteArray inquiryData(const char *vendor, const char *product, const char *revision)
{
    return QByteArray(8, '\0') + QByteArray(vendor).leftJustified(8) + QByteArray(product).leftJustified(16)
           + QByteArray(revision).leftJustified(4);
}

// The ATA Information page: a copy of IDENTIFY DEVICE, whose strings are
// space-padded with byte pairs swapped.
QByteArray ataInformationPage(const char *model, const char *serial)
{
    const auto ata = [](const char *text, int length) {
        QByteArray s = QByteArray(text).leftJustified(length);
        for (int i = 0; i < length; i += 2)
            std::swap(s[i], s[i + 1]);
        return s;
    };
    return QByteArray("\0\x89\x02\x38", 4) + QByteArray(56 + 20, '\0') + ata(serial, 20) + QByteArray(6, '\0')
           + ata("05.01D05", 8) + ata(model, 40) + QByteArray(512 - 94, '\0');
}

// The unit serial number page, with bytes past its stated length.
QByteArray unitSerialPage(const char *serial)
{
    return QByteArray("\0\x80\0", 3) + char(strlen(serial)) + serial + "JUNK";
}

// Whether an access problem line names \a path and the reason for \a error.
bool names(const std::string &line, const std::string &path, int error)
{
    return line.rfind(path + ": ", 0) == 0 && line.find(std::strerror(error)) != std::string::npos;
}

} // namespace

Q_DECLARE_METATYPE(Paths)
Q_DECLARE_METATYPE(Pages)
Q_DECLARE_METATYPE(Files)

class TestLinuxBackend : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    std::shared_ptr<FakeSystem> m_system;
    std::unique_ptr<LinuxBackend> m_backend;

    QString sys(const QString &relative) const { return m_dir.filePath(QStringLiteral("sys/") + relative); }

    FakeDrive &addDrive(const std::string &path, int fd)
    {
        m_system->openResult[path] = fd;
        FakeDrive &d = m_system->drives[fd];
        std::iota(d.sector.begin(), d.sector.end(), std::uint8_t(7));
        return d;
    }

    DiskHandle open(const std::string &path)
    {
        const DiskHandle h = m_backend->openDisk(path);
        QTest::qVerify(h != kNoHandle, "openDisk", path.c_str(), __FILE__, __LINE__);
        return h;
    }

private slots:
    void init()
    {
        QDir(m_dir.path()).removeRecursively();
        // sda fixed with three partitions, sdb removable with one, sdc and sdd
        // without partitions (sdc mounted whole), loop0 a virtual device.
        for (const QString entry : {"sda 8:0", "sda/sda10 8:10", "sda/sda2 8:2", "sda/sda1 8:1", "sdb 8:16",
                                    "sdb/sdb1 8:17", "sdc 8:32", "sdd 8:48", "devices/virtual/block/loop0 7:0"}) {
            const QString name = entry.section(u' ', 0, 0);
            const QString dir = name.startsWith(u"devices/") ? name : QStringLiteral("block/") + name;
            writeFile(sys(dir + QStringLiteral("/dev")), entry.section(u' ', 1).toLatin1() + '\n');
            if (name.count(u'/') == 1)
                writeFile(sys(dir + QStringLiteral("/partition")), name.mid(name.indexOf(u'/') + 4).toLatin1());
        }
        writeFile(sys(QStringLiteral("block/sdb/removable")), "1\n");
        QVERIFY(QFile::link(sys(QStringLiteral("devices/virtual/block/loop0")), sys(QStringLiteral("block/loop0"))));
        // A btrfs subvolume is listed before the whole file system of the same
        // disk; blanks in a mount point are escaped as the kernel does; a line
        // that is no mount is passed over; the last line need not end.
        writeFile(m_dir.filePath(QStringLiteral("mountinfo")),
                  "21 1 8:2 / / rw - ext4 /dev/sda2 rw\n"
                  "22 21 0:40 /@data /srv/data rw - btrfs /dev/sda1 rw\n"
                  "23 21 0:40 / /mnt/all\\040of\\011it\\134x rw shared:5 - btrfs /dev/sda1 rw\n"
                  "garbage line\n"
                  "25 21 8:17 / /media/stick rw - vfat /dev/sdb1 rw\n"
                  "26 21 7:0 / /snap/core rw - squashfs /dev/loop0 ro\n"
                  "24 21 8:32 / /data rw master:3 shared:4 - xfs /dev/sdc rw");

        m_system = std::make_shared<FakeSystem>();
        LinuxBackend::Environment env;
        env.system = m_system;
        env.sysRoot = sys(QString()).toStdString();
        env.mountInfo = m_dir.filePath(QStringLiteral("mountinfo")).toStdString();
        m_backend = std::make_unique<LinuxBackend>(env);
    }

    void openingAndGeometry()
    {
        addDrive("/dev/sda", 5);
        addDrive("/dev/sdb", 6);
        m_system->openResult["/dev/sdc"] = -EACCES;
        QCOMPARE(m_backend->openDisk("/dev/sdc"), kNoHandle);
        QCOMPARE(m_backend->openDisk("/dev/sdd"), kNoHandle); // not there: nothing to report
        const std::vector<std::string> problems = m_backend->accessProblems();
        QCOMPARE(problems.size(), std::size_t(1));
        QVERIFY2(names(problems[0], "/dev/sdc", EACCES), problems[0].c_str());

        // The ioctl's 16-bit cylinder count has wrapped; removable disks say so.
        DiskGeometry g;
        const DiskHandle a = open("/dev/sda");
        QVERIFY(m_backend->geometry(a, g));
        QCOMPARE(std::pair(g.mediaType, g.cylinders), std::pair(kFixedMedia, std::uint64_t(243201)));
        QVERIFY(m_backend->geometry(open("/dev/sdb"), g));
        QCOMPARE(g.mediaType, 11u);

        m_backend->closeDisk(a);
        QCOMPARE(m_system->closed, 5);
        QVERIFY(!m_backend->geometry(a, g)); // a closed handle is unknown
    }

    // Which access path carries a command, and which refusals are reported.
    // via -1: the issuer picks the path; 1: SMART over the HDIO ioctls alone.
    void accessPaths_data()
    {
        QTest::addColumn<bool>("returnStatus");
        QTest::addColumn<int>("via");
        QTest::addColumn<Paths>("answers");
        QTest::addColumn<int>("expectedPath"); // -1: not answered
        QTest::addColumn<int>("problem");      // errno of the reported refusal, 0 none

        using A = Answer;
        QTest::newRow("read: (16)") << false << -1 << Paths{A::Data, A::Data, A::Data} << 0 << 0;
        QTest::newRow("read: nothing moved, HDIO") << false << -1 << Paths{A::ShortData, A::Data, A::Data} << 1 << 0;
        QTest::newRow("read: (12)") << false << -1 << Paths{A::Illegal, A::Refused, A::Data} << 2 << 0;
        QTest::newRow("status: sense registers") << true << -1 << Paths{A::Registers, A::Data, A::Data} << 0 << 0;
        QTest::newRow("status: CK_COND ignored, HDIO task")
            << true << -1 << Paths{A::NoRegisters, A::Data, A::Registers} << 1 << 0;
        // (12) is open to writers; (16), wanting CAP_SYS_RAWIO, is still reported.
        QTest::newRow("status: task block unchanged, (16) refused, (12)")
            << true << -1 << Paths{A::Refused, A::Unchanged, A::Registers} << 2 << EPERM;
        // Without CAP_SYS_ADMIN the kernel refuses the HDIO ioctls; the same
        // ATA PASS-THROUGH (16) they would send goes out directly.
        QTest::newRow("HDIO refused: read over (16)") << false << 1 << Paths{A::Data, A::Refused, A::Data} << 1 << 0;
        QTest::newRow("HDIO refused: status over (16)")
            << true << 1 << Paths{A::Registers, A::Refused, A::Data} << 1 << 0;
        QTest::newRow("HDIO and (16) refused") << false << 1 << Paths{A::Refused, A::Refused, A::Data} << -1 << EPERM;
    }

    void accessPaths()
    {
        QFETCH(bool, returnStatus);
        QFETCH(int, via);
        QFETCH(Paths, answers);
        QFETCH(int, expectedPath);
        QFETCH(int, problem);
        FakeDrive &drive = addDrive("/dev/sda", 5);
        drive.path = answers;
        const DiskHandle h = open("/dev/sda");

        AtaExchange x;
        x.registers = returnStatus ? AtaCommandIssuer::smartReturnStatus() : AtaCommandIssuer::smartReadData();
        x.dataIn = !returnStatus;
        x.driverError = 0xEE;
        if (via < 0)
            QCOMPARE(AtaCommandIssuer::issue(*m_backend, h, 0, x.registers, x.data), expectedPath);
        else
            QCOMPARE(m_backend->ataCommand(h, via, 0, x) ? via : -1, expectedPath);
        if (expectedPath >= 0 && via >= 0)
            QCOMPARE(x.driverError, 0);
        if (expectedPath >= 0 && returnStatus)
            QCOMPARE(x.registers.cylinderLow * 256 + x.registers.cylinderHigh, 0xF42C);
        else if (expectedPath >= 0)
            QVERIFY(x.data == drive.sector);

        const std::vector<std::string> problems = m_backend->accessProblems();
        QCOMPARE(problems.size(), std::size_t(problem != 0));
        if (problem)
            QVERIFY2(names(problems[0], "/dev/sda", problem), problems[0].c_str());
    }

    // The identity in the device descriptor, as "vendor|product|revision|serial".
    void descriptorIdentity_data()
    {
        QTest::addColumn<Pages>("overSgIo");
        QTest::addColumn<Files>("inSysfs");
        QTest::addColumn<QString>("expected");

        const QByteArray ata = inquiryData("ATA", "WDC WD5000AAKS-0", "1D05");
        const QByteArray page = ataInformationPage("WDC WD5000AAKS-00V1A0", "WD-WCAWF1234567");
        const QByteArray noIdentify = page.left(60) + QByteArray(512, '\0');
        const QString full = QStringLiteral("|WDC WD5000AAKS-00V1A0|05.01D05|WD-WCAWF1234567");
        const QString cutModel = QStringLiteral("|WDC WD5000AAKS-0|1D05|Z1X2");

        // libata's "ATA" names no maker, and its INQUIRY cuts the model to 16 characters.
        QTest::newRow("ATA page") << Pages{{-1, ata}, {0x89, page}, {0x80, unitSerialPage("unit")}} << Files{} << full;
        QTest::newRow("ATA page from sysfs") << Pages{{-1, ata}} << Files{{"vpd_pg89", page}} << full;
        QTest::newRow("ATA page cut short")
            << Pages{{-1, ata}, {0x89, page.chopped(1)}, {0x80, unitSerialPage("  Z1X2  ")}} << Files{} << cutModel;
        QTest::newRow("ATA page without IDENTIFY, serial from sysfs")
            << Pages{{-1, ata}, {0x89, noIdentify}} << Files{{"vpd_pg80", unitSerialPage("Z1X2")}} << cutModel;
        QTest::newRow("SCSI disk") << Pages{{-1, inquiryData("SEAGATE", "ST3300657SS", "0006")}, {0x89, page},
                                           {0x80, unitSerialPage("6SJ0ABCD")}}
                                   << Files{} << QStringLiteral("SEAGATE|ST3300657SS|0006|6SJ0ABCD");
        QTest::newRow("no INQUIRY: sysfs strings") << Pages{} << Files{{"vendor", "ATA     \n"}, {"model", "HUS724040ALE640 \n"}}
                                                   << QStringLiteral("|HUS724040ALE640||");
    }

    void descriptorIdentity()
    {
        QFETCH(Pages, overSgIo);
        QFETCH(Files, inSysfs);
        QFETCH(QString, expected);
        addDrive("/dev/sda", 5).pages = overSgIo;
        for (const auto &[name, content] : inSysfs)
            writeFile(sys(QStringLiteral("block/sda/device/") + name), content);

        std::uint8_t buffer[4096] = {};
        const int n = m_backend->deviceDescriptor(open("/dev/sda"), buffer, int(sizeof buffer));
        std::string got = DeviceDescriptor::stringAt(buffer, n, DeviceDescriptor::kVendorOffsetField);
        for (const int field : {DeviceDescriptor::kProductOffsetField, DeviceDescriptor::kRevisionOffsetField,
                                DeviceDescriptor::kSerialOffsetField})
            got += '|' + DeviceDescriptor::stringAt(buffer, n, field);
        QCOMPARE(QString::fromStdString(got), expected);
    }

    void volumes()
    {
        // Partitions in number order; a whole disk only when mounted; nothing virtual.
        const std::vector<std::string> expected = {"/dev/sda1", "/dev/sda2", "/dev/sda10", "/dev/sdb1", "/dev/sdc"};
        QCOMPARE(m_backend->volumeNames(), expected);
        QVERIFY(m_backend->isFixedVolume("/dev/sda10"));
        QVERIFY(!m_backend->isFixedVolume("/dev/sdb1"));
        QVERIFY(!m_backend->isFixedVolume("/dev/loop0"));

        // Whole file systems take their roots before subvolumes; removable
        // and virtual volumes have none.
        std::vector<std::pair<std::string, std::string>> roots;
        for (const MountPoint &m : m_backend->mountPoints())
            roots.emplace_back(m.root, m.volumeName);
        const std::vector<std::pair<std::string, std::string>> want = {
            {"/", "/dev/sda2"}, {"/mnt/all of\tit\\x", "/dev/sda1"}, {"/data", "/dev/sdc"}, {"/srv/data", "/dev/sda1"}};
        QCOMPARE(roots, want);
    }

    // Disks of kinds this backend does not read are named, one line each in name order; their
    // partitions, eMMC boot areas, multipath paths and devices that are no disks are not.
    void unsupportedDisks_data()
    {
        QTest::addColumn<QStringList>("entries"); // added below block/ to the tree of init()
        QTest::addColumn<QStringList>("expected");

        const auto line = [](const char *name, const char *kind) {
            return QStringLiteral("/dev/%1: %2; Korvane reads ATA disks (/dev/sda to /dev/sdz) only").arg(name, kind);
        };
        QTest::newRow("ATA disks and a loop device") << QStringList{} << QStringList{};
        QTest::newRow("NVMe namespaces in number order")
            << QStringList{"nvme10n1", "nvme2n1", "nvme2n1/nvme2n1p1", "nvme0c0n1"}
            << QStringList{line("nvme2n1", "an NVMe disk"), line("nvme10n1", "an NVMe disk")};
        QTest::newRow("virtio and Xen") << QStringList{"vdb", "vdb/vdb1", "xvda", "xvda/xvda2"}
                                        << QStringList{line("vdb", "a virtio disk"), line("xvda", "a Xen virtual disk")};
        QTest::newRow("SD/eMMC with boot areas")
            << QStringList{"mmcblk0", "mmcblk0/mmcblk0p1", "mmcblk0boot0", "mmcblk0boot1", "mmcblk0rpmb"}
            << QStringList{line("mmcblk0", "an SD card or eMMC disk")};
        QTest::newRow("no disks") << QStringList{"ram0", "zram0", "dm-0", "md127", "sr0", "fd0", "loop7", "nbd0"}
                                  << QStringList{};
    }
    void unsupportedDisks()
    {
        QFETCH(QStringList, entries);
        QFETCH(QStringList, expected);
        for (const QString &entry : entries) {
            writeFile(sys(QStringLiteral("block/%1/dev").arg(entry)), "259:0\n");
            if (entry.contains(u'/'))
                writeFile(sys(QStringLiteral("block/%1/partition").arg(entry)), "1\n");
        }
        QStringList lines;
        for (const std::string &l : m_backend->unsupportedDisks())
            lines << QString::fromStdString(l);
        QCOMPARE(lines, expected);
    }

    void sectorReads()
    {
        m_system->openResult["/dev/sda"] = 9;
        for (int i = 0; i < 10240; ++i)
            m_system->media += char(i * 31);
        const DiskHandle h = m_backend->openForRead("/dev/sda", true);
        QCOMPARE(m_system->lastFlags & (O_ACCMODE | O_DIRECT), O_RDONLY | O_DIRECT);

        // Short reads are continued; a buffer off the block boundary still
        // works with direct I/O.
        alignas(4096) static std::uint8_t buffer[4096 + 1];
        QCOMPARE(m_backend->readAt(h, 512, buffer + 1, 4096), std::int64_t(4096));
        QVERIFY(std::memcmp(buffer + 1, m_system->media.constData() + 512, 4096) == 0);
        QCOMPARE(m_backend->readAt(h, 8192, buffer, 4096), std::int64_t(2048)); // the end of the disk
        m_system->failReads = true;
        QCOMPARE(m_backend->readAt(h, 0, buffer, 512), std::int64_t(-1));
        // Direct I/O cannot be spliced: a verify reads into the buffer.
        QCOMPARE(m_backend->verifyAt(h, 0, buffer, 512), std::int64_t(-1));
        QCOMPARE(m_system->discards, 0);
        m_backend->closeDisk(h);
    }

    void sectorChecks()
    {
        m_system->openResult["/dev/sda"] = 9;
        m_system->media = QByteArray(10240, 'x');
        const DiskHandle h = m_backend->openForRead("/dev/sda", false);
        alignas(4096) static std::uint8_t scratch[4096];
        std::memset(scratch, 0, sizeof scratch);

        // Cached reads are checked without copying: short pieces are continued, the end of
        // the disk gives a short count, an error anywhere fails the whole check.
        QCOMPARE(m_backend->verifyAt(h, 512, scratch, 4096), std::int64_t(4096));
        QCOMPARE(m_system->discards, 3);
        QCOMPARE(scratch[0], std::uint8_t(0));
        QCOMPARE(m_backend->verifyAt(h, 8192, scratch, 4096), std::int64_t(2048));
        m_system->failReads = true;
        QCOMPARE(m_backend->verifyAt(h, 0, scratch, 512), std::int64_t(-1));

        // Where splicing is refused, the bytes are read into the scratch buffer instead.
        m_system->failReads = false;
        m_system->refuseDiscard = true;
        QCOMPARE(m_backend->verifyAt(h, 512, scratch, 1024), std::int64_t(1024));
        QCOMPARE(scratch[0], std::uint8_t('x'));
        m_backend->closeDisk(h);
        QCOMPARE(m_backend->verifyAt(h, 0, scratch, 512), std::int64_t(-1));
    }
};

QTEST_GUILESS_MAIN(TestLinuxBackend)
#include "tst_linuxbackend.moc"