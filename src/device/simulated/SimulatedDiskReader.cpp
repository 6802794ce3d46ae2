#include "SimulatedDiskReader.h"

#include "AtaSectors.h"
#include "JsonFields.h"
#include "SmartDump.h"
#include "device/IdentifyDecoder.h"
#include "device/LocalFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSet>

#include <algorithm>

namespace {

// A description is a page of text; anything far larger is not one.
constexpr qint64 kMaxDescriptionSize = 1 << 20;
constexpr qint64 kMaxRaw = (qint64(1) << 48) - 1;
constexpr qint64 kMaxDiskBytes = qint64(1) << 60;
constexpr int kMaxDeviceNumber = 25;

// Defaults of a disk built from a description alone: a current SATA drive
// with SMART on, its self-tests done and off-line collection finished.
constexpr quint16 kSmartRevision = 16;
constexpr quint8 kOfflineStatus = 0x82;
constexpr quint8 kOfflineCapability = 0x7B;
constexpr quint16 kSmartCapability = 0x0003;
constexpr quint8 kErrorLogging = 0x01;
constexpr quint16 kMajorVersionWord = 0x01F0; // ATA/ATAPI-4 to ATA8-ACS

enum SmartDataByte {
    OfflineStatusByte = 362,
    SelfTestStatusByte = 363,
    OfflineTimeWord = 364,
    OfflineCapabilityByte = 367,
    SmartCapabilityWord = 368,
    ErrorLoggingByte = 370,
    ShortTestMinutesByte = 372,
    ExtendedTestMinutesByte = 373,
    ConveyanceTestMinutesByte = 374,
};

Sector freshSmartSector(quint16 revision)
{
    Sector sector{};
    setSectorWord(sector, 0, revision);
    return sector;
}

Sector freshSmartData(quint16 revision)
{
    Sector data = freshSmartSector(revision);
    data[OfflineStatusByte] = kOfflineStatus;
    data[SelfTestStatusByte] = 0;
    data[OfflineTimeWord] = quint8(600 & 0xFF);
    data[OfflineTimeWord + 1] = quint8(600 >> 8);
    data[OfflineCapabilityByte] = kOfflineCapability;
    data[SmartCapabilityWord] = quint8(kSmartCapability);
    data[ErrorLoggingByte] = kErrorLogging;
    data[ShortTestMinutesByte] = 2;
    data[ExtendedTestMinutesByte] = 90;
    data[ConveyanceTestMinutesByte] = 5;
    return data;
}

// The IDENTIFY words a present-day SATA disk reports, before the identity
// fields of the description go in.
Sector freshIdentify(bool removable, quint64 sectors)
{
    Sector id{};
    setSectorWord(id, 0, removable ? 0x0080 : 0x0040);
    setSectorWord(id, 1, 16383);
    setSectorWord(id, 3, 16);
    setSectorWord(id, 6, 63);
    setSectorWord(id, 47, 0x8010);
    setSectorWord(id, 49, 0x2F00);
    setSectorWord(id, 50, 0x4000);
    setSectorWord(id, 53, 0x0007);
    setSectorWord(id, 63, 0x0007);
    setSectorWord(id, 64, 0x0003);
    setSectorWord(id, 80, kMajorVersionWord);
    setSectorWord(id, 82, 0x746B);
    setSectorWord(id, 83, 0x7D09);
    setSectorWord(id, 84, 0x6163);
    setSectorWord(id, 85, 0x7469);
    setSectorWord(id, 86, 0x3C01);
    setSectorWord(id, 87, 0x6163);
    setSectorWord(id, 88, 0x407F);
    setSectorText(id, IdentifyDecoder::kModelOffset, IdentifyDecoder::kModelLength, "SIMULATED DISK");
    setSectorText(id, IdentifyDecoder::kFirmwareOffset, IdentifyDecoder::kFirmwareLength, "1.0");
    AtaSectors::putLbaCount(id, sectors);
    return id;
}

void setBit(Sector &sector, int word, quint16 bit, bool on)
{
    const quint16 value = sectorWord(sector, word);
    setSectorWord(sector, word, on ? value | bit : value & ~bit);
}

// Words 83 and 87 tell whether 82 and 85 mean anything: make them say so.
void markValid(Sector &sector, int word)
{
    setSectorWord(sector, word, (sectorWord(sector, word) & 0x3FFF) | 0x4000);
}

int freeSlot(const Sector &sector)
{
    // After the last used slot first, so that a gap a drive leaves in its
    // table stays a gap.
    int last = -1;
    for (int slot = 0; slot < AtaSectors::kSlots; ++slot) {
        if (sector[AtaSectors::slotOffset(slot)] != 0)
            last = slot;
    }
    if (last + 1 < AtaSectors::kSlots)
        return last + 1;
    for (int slot = 0; slot < AtaSectors::kSlots; ++slot) {
        if (sector[AtaSectors::slotOffset(slot)] == 0)
            return slot;
    }
    return -1;
}

// A dump's sectors as the drive gave them, and the size and SMART state they imply.
void takeDump(SimulatedDisk &disk, const SmartDump &dump, const QString &dumpPath)
{
    disk.dumpFile = QFileInfo(dumpPath).canonicalFilePath();
    disk.identify = *dump.identify;
    disk.smartData = dump.smartData;
    disk.thresholds = dump.thresholds;
    disk.dumpFailing = dump.healthy == false;
    disk.sizeBytes = AtaSectors::lbaCount(disk.identify) * 512;
    disk.geometry.mediaType = kFixedMedia;
    disk.geometry.bytesPerSector = 512;
    disk.geometry.sectorsPerTrack = 63;
    disk.geometry.tracksPerCylinder = 255;
    disk.geometry.cylinders = disk.sizeBytes / (512ull * 63 * 255);
    disk.smartSupported = IdentifyDecoder::smartSupported(disk.identify) != 0;
    disk.smartEnabled = IdentifyDecoder::smartEnabled(disk.identify) != 0;
}

/// Reads one description into a disk; faults go to m_fields.
class DescriptionParser
{
public:
    explicit DescriptionParser(const QString &path) : m_path(path) {}

    std::optional<SimulatedDisk> parse(const QJsonObject &root, QString *error);

private:
    void readBase(const QJsonObject &root);
    void readIdentity(const QJsonValue &value);
    void readShape(const QJsonObject &root);
    void readSmart(const QJsonValue &value);
    void readAttribute(const QJsonValue &value, const QString &field, QSet<qint64> &seen);
    void placeThreshold(quint8 id, int slot, std::optional<qint64> threshold, const QString &idField);
    void readBehaviour(const QJsonValue &value);
    void readVolumes(const QJsonValue &value);
    void readSurface(const QJsonValue &value);
    void readSlowSectors(const QJsonValue &value, const QString &field);
    std::optional<ValueSchedule> schedule(const QJsonValue &value, const QString &field, qint64 highest);
    std::optional<QByteArray> identityText(const QJsonObject &identity, const char *key, int length);

    Sector &smartData();
    Sector &thresholds();

    QString m_path;
    JsonFields m_fields;
    SimulatedDisk m_disk;
    bool m_identifyChanged = false;
    bool m_smartChanged = false;
    bool m_thresholdsChanged = false;
    quint16 m_revision = kSmartRevision;
};

std::optional<SimulatedDisk> DescriptionParser::parse(const QJsonObject &root, QString *error)
{
    m_fields.checkKeys(root, QString(),
                       {QStringLiteral("dump"), QStringLiteral("deviceNumber"), QStringLiteral("size"),
                        QStringLiteral("removable"), QStringLiteral("busType"), QStringLiteral("geometry"),
                        QStringLiteral("identity"), QStringLiteral("smart"), QStringLiteral("behaviour"),
                        QStringLiteral("volumes"), QStringLiteral("surface")});
    m_disk.sourceFile = m_path;
    readBase(root);
    readIdentity(root.value(QLatin1String("identity")));
    readShape(root);
    readSmart(root.value(QLatin1String("smart")));
    readBehaviour(root.value(QLatin1String("behaviour")));
    readVolumes(root.value(QLatin1String("volumes")));
    readSurface(root.value(QLatin1String("surface")));
    if (m_fields.failed()) {
        if (error)
            *error = m_fields.error();
        return std::nullopt;
    }

    // A dump's sectors go out as they were saved unless the description
    // changed them; whatever was built or changed gets valid checksums.
    if (m_identifyChanged)
        AtaSectors::sealIdentify(m_disk.identify);
    if (m_smartChanged && m_disk.smartData)
        AtaSectors::sealSmart(*m_disk.smartData);
    if (m_thresholdsChanged && m_disk.thresholds)
        AtaSectors::sealSmart(*m_disk.thresholds);
    return std::move(m_disk);
}

void DescriptionParser::readBase(const QJsonObject &root)
{
    const auto dumpName = m_fields.string(root.value(QLatin1String("dump")), QStringLiteral("dump"));
    const auto removable = m_fields.boolean(root.value(QLatin1String("removable")), QStringLiteral("removable"));
    m_disk.removable = removable.value_or(false);
    if (dumpName) {
        const QString dumpPath = QFileInfo(m_path).dir().absoluteFilePath(*dumpName);
        QString why;
        const auto dump = SmartDump::load(dumpPath, &why);
        if (!dump) {
            m_fields.fail(QStringLiteral("dump"), QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(dumpPath), why));
            return;
        }
        takeDump(m_disk, *dump, dumpPath);
        return;
    }
    const auto size = m_fields.integer(root.value(QLatin1String("size")), QStringLiteral("size"), 512, kMaxDiskBytes);
    if (!size && !m_fields.failed())
        m_fields.fail(QStringLiteral("size"), QStringLiteral("missing: a disk without a dump needs its size in bytes"));
    m_disk.identify = freshIdentify(m_disk.removable, quint64(size.value_or(0)) / 512);
    // Without a serial of its own a disk is told apart by its file's name.
    setSectorText(m_disk.identify, IdentifyDecoder::kSerialOffset, IdentifyDecoder::kSerialLength,
                  QFileInfo(m_path).completeBaseName().toLatin1().toStdString());
    m_disk.smartData = freshSmartData(kSmartRevision);
    m_disk.thresholds = freshSmartSector(kSmartRevision);
    m_identifyChanged = m_smartChanged = m_thresholdsChanged = true;
}

std::optional<QByteArray> DescriptionParser::identityText(const QJsonObject &identity, const char *key, int length)
{
    const QString field = JsonFields::child(QStringLiteral("identity"), QLatin1String(key));
    const auto text = m_fields.string(identity.value(QLatin1String(key)), field);
    if (!text)
        return std::nullopt;
    const QByteArray bytes = text->toLatin1();
    if (bytes.size() > length || QString::fromLatin1(bytes) != *text) {
        m_fields.fail(field, QStringLiteral("at most %1 Latin-1 characters fit, found \"%2\"").arg(length).arg(*text));
        return std::nullopt;
    }
    return bytes;
}

void DescriptionParser::readIdentity(const QJsonValue &value)
{
    const QString field = QStringLiteral("identity");
    const auto identity = m_fields.section(value, field,
                                           {QStringLiteral("model"), QStringLiteral("serial"), QStringLiteral("firmware"),
                                            QStringLiteral("vendor"), QStringLiteral("majorVersion"), QStringLiteral("minorVersion"),
                                            QStringLiteral("smartSupported"), QStringLiteral("smartEnabled"),
                                            QStringLiteral("rotationRate")});
    if (!identity)
        return;
    Sector &id = m_disk.identify;
    auto at = [&](const char *key) { return JsonFields::child(field, QLatin1String(key)); };
    auto put = [&](const char *key, int offset, int length) {
        if (const auto text = identityText(*identity, key, length)) {
            setSectorText(id, offset, length, text->toStdString());
            m_identifyChanged = true;
        }
    };
    put("model", IdentifyDecoder::kModelOffset, IdentifyDecoder::kModelLength);
    put("serial", IdentifyDecoder::kSerialOffset, IdentifyDecoder::kSerialLength);
    put("firmware", IdentifyDecoder::kFirmwareOffset, IdentifyDecoder::kFirmwareLength);
    if (const auto vendor = m_fields.string(identity->value(QLatin1String("vendor")), at("vendor")))
        m_disk.vendor = vendor->toStdString();

    auto putIdentifyWord = [&](const char *key, int word) {
        if (const auto v = m_fields.integer(identity->value(QLatin1String(key)), at(key), 0, 0xFFFF)) {
            setSectorWord(id, word, quint16(*v));
            m_identifyChanged = true;
        }
    };
    putIdentifyWord("majorVersion", 80);
    putIdentifyWord("minorVersion", 81);
    putIdentifyWord("rotationRate", 217);

    if (const auto supported = m_fields.boolean(identity->value(QLatin1String("smartSupported")), at("smartSupported"))) {
        setBit(id, 82, 0x0001, *supported);
        markValid(id, 83);
        m_disk.smartSupported = *supported;
        m_identifyChanged = true;
    }
    if (const auto enabled = m_fields.boolean(identity->value(QLatin1String("smartEnabled")), at("smartEnabled"))) {
        setBit(id, 85, 0x0001, *enabled);
        markValid(id, 87);
        m_disk.smartEnabled = *enabled;
        m_identifyChanged = true;
    }
}

void DescriptionParser::readShape(const QJsonObject &root)
{
    const auto size = m_fields.integer(root.value(QLatin1String("size")), QStringLiteral("size"), 512, kMaxDiskBytes);
    m_disk.sizeBytes = size ? quint64(*size) : AtaSectors::lbaCount(m_disk.identify) * 512;
    if (const auto number = m_fields.integer(root.value(QLatin1String("deviceNumber")), QStringLiteral("deviceNumber"),
                                             0, kMaxDeviceNumber)) {
        m_disk.requestedNumber = int(*number);
    }
    // Removable disks usually sit behind USB; fixed ones on SATA.
    m_disk.busType = quint32(m_fields.integer(root.value(QLatin1String("busType")), QStringLiteral("busType"), 0, 255)
                                 .value_or(m_disk.removable ? 7 : 11));

    DiskGeometry &g = m_disk.geometry;
    g.mediaType = m_disk.removable ? 11 : kFixedMedia;
    g.bytesPerSector = 512;
    g.sectorsPerTrack = 63;
    g.tracksPerCylinder = 255;
    const QString field = QStringLiteral("geometry");
    if (const auto geometry = m_fields.section(root.value(field), field,
                                               {QStringLiteral("bytesPerSector"), QStringLiteral("sectorsPerTrack"),
                                                QStringLiteral("tracksPerCylinder")})) {
        auto read = [&](const char *key, std::uint32_t &out, qint64 highest) {
            if (const auto v = m_fields.integer(geometry->value(QLatin1String(key)),
                                                JsonFields::child(field, QLatin1String(key)), 1, highest)) {
                out = std::uint32_t(*v);
            }
        };
        read("bytesPerSector", g.bytesPerSector, 65536);
        read("sectorsPerTrack", g.sectorsPerTrack, 255);
        read("tracksPerCylinder", g.tracksPerCylinder, 255);
    }
    g.cylinders = m_disk.sizeBytes / (quint64(g.bytesPerSector) * g.sectorsPerTrack * g.tracksPerCylinder);
}

Sector &DescriptionParser::smartData()
{
    if (!m_disk.smartData)
        m_disk.smartData = freshSmartData(m_revision);
    m_smartChanged = true;
    return *m_disk.smartData;
}

Sector &DescriptionParser::thresholds()
{
    if (!m_disk.thresholds)
        m_disk.thresholds = freshSmartSector(m_revision);
    m_thresholdsChanged = true;
    return *m_disk.thresholds;
}

void DescriptionParser::readSmart(const QJsonValue &value)
{
    const QString field = QStringLiteral("smart");
    const auto smart = m_fields.section(value, field,
                                        {QStringLiteral("revision"), QStringLiteral("offlineStatus"), QStringLiteral("selfTestStatus"),
                                         QStringLiteral("offlineCapability"), QStringLiteral("capability"),
                                         QStringLiteral("errorLogging"), QStringLiteral("status"), QStringLiteral("attributes")});
    if (!smart)
        return;
    auto at = [&](const char *key) { return JsonFields::child(field, QLatin1String(key)); };
    auto get = [&](const char *key, qint64 highest) {
        return m_fields.integer(smart->value(QLatin1String(key)), at(key), 0, highest);
    };

    if (const auto revision = get("revision", 0xFFFF)) {
        m_revision = quint16(*revision);
        setSectorWord(smartData(), 0, m_revision);
        setSectorWord(thresholds(), 0, m_revision);
    }
    auto putByte = [&](const char *key, int byte) {
        if (const auto v = get(key, 0xFF))
            smartData()[byte] = quint8(*v);
    };
    putByte("offlineStatus", OfflineStatusByte);
    putByte("selfTestStatus", SelfTestStatusByte);
    putByte("offlineCapability", OfflineCapabilityByte);
    putByte("errorLogging", ErrorLoggingByte);
    if (const auto capability = get("capability", 0xFFFF)) {
        Sector &data = smartData();
        data[SmartCapabilityWord] = quint8(*capability);
        data[SmartCapabilityWord + 1] = quint8(*capability >> 8);
    }

    if (const auto status = m_fields.string(smart->value(QLatin1String("status")), at("status"))) {
        if (*status == QLatin1String("good"))
            m_disk.forcedHealthy = true;
        else if (*status == QLatin1String("failing"))
            m_disk.forcedHealthy = false;
        else if (*status != QLatin1String("auto"))
            m_fields.fail(at("status"), QStringLiteral("expected \"auto\", \"good\" or \"failing\", found \"%1\"").arg(*status));
    }

    if (const auto attributes = m_fields.array(smart->value(QLatin1String("attributes")), at("attributes"))) {
        QSet<qint64> seen;
        for (qsizetype i = 0; i < attributes->size(); ++i)
            readAttribute(attributes->at(i), JsonFields::item(at("attributes"), i), seen);
    }
}

void DescriptionParser::readAttribute(const QJsonValue &value, const QString &field, QSet<qint64> &seen)
{
    const auto attribute = m_fields.section(value, field,
                                            {QStringLiteral("id"), QStringLiteral("name"), QStringLiteral("flags"),
                                             QStringLiteral("current"), QStringLiteral("worst"), QStringLiteral("threshold"),
                                             QStringLiteral("raw")});
    if (!attribute)
        return;
    auto at = [&](const char *key) { return JsonFields::child(field, QLatin1String(key)); };
    auto valueOf = [&](const char *key) { return attribute->value(QLatin1String(key)); };

    const auto id = m_fields.integer(valueOf("id"), at("id"), 1, 255);
    if (!id) {
        if (!m_fields.failed())
            m_fields.fail(at("id"), QStringLiteral("missing: every attribute needs its id (1 to 255)"));
        return;
    }
    if (seen.contains(*id)) {
        m_fields.fail(at("id"), QStringLiteral("attribute %1 is listed twice").arg(*id));
        return;
    }
    seen.insert(*id);
    m_fields.string(valueOf("name"), at("name")); // a note for the reader; the catalogue names attributes
    const auto flags = m_fields.integer(valueOf("flags"), at("flags"), 0, 0xFFFF);
    const auto threshold = m_fields.integer(valueOf("threshold"), at("threshold"), 0, 0xFF);
    const auto current = schedule(valueOf("current"), at("current"), 0xFF);
    const auto worst = schedule(valueOf("worst"), at("worst"), 0xFF);
    const auto raw = schedule(valueOf("raw"), at("raw"), kMaxRaw);
    if (m_fields.failed())
        return;

    Sector &data = smartData();
    int slot = AtaSectors::findSlot(data, quint8(*id));
    const bool added = slot < 0;
    if (added) {
        slot = freeSlot(data);
        if (slot < 0) {
            m_fields.fail(at("id"), QStringLiteral("no free attribute slot left (a SMART data sector holds 30)"));
            return;
        }
    }
    const int entry = AtaSectors::slotOffset(slot);
    if (added) {
        std::fill(data.begin() + entry, data.begin() + entry + 12, 0);
        data[entry] = quint8(*id);
        data[entry + 3] = 100;
    }
    if (flags) {
        data[entry + 1] = quint8(*flags);
        data[entry + 2] = quint8(*flags >> 8);
    }

    ChangingAttribute changing;
    changing.slot = slot;
    changing.worstBefore = added ? 0xFF : data[entry + 4];
    const ValueSchedule currentNow = current.value_or(ValueSchedule::constant(data[entry + 3]));
    data[entry + 3] = quint8(currentNow.valueAt(0));
    // Worst follows the lowest current value unless the description sets it;
    // a slot whose current value stays untouched keeps its worst as saved.
    if (worst)
        data[entry + 4] = quint8(worst->valueAt(0));
    else if (current || added)
        data[entry + 4] = quint8(std::min<quint64>(changing.worstBefore, currentNow.valueAt(0)));
    if (raw)
        AtaSectors::putRaw(data, slot, raw->valueAt(0));
    if ((current && !current->isConstant()) || (worst && !worst->isConstant()) || (raw && !raw->isConstant())) {
        changing.current = current;
        changing.worst = worst;
        changing.raw = raw;
        m_disk.changing.append(changing);
    }

    placeThreshold(quint8(*id), slot, threshold, at("id"));
}

void DescriptionParser::placeThreshold(quint8 id, int slot, std::optional<qint64> threshold, const QString &idField)
{
    // The thresholds sector keeps the same slot when it is free there, as drives do.
    Sector &limits = thresholds();
    int limitSlot = AtaSectors::findSlot(limits, id);
    if (limitSlot < 0) {
        limitSlot = limits[AtaSectors::slotOffset(slot)] == 0 ? slot : freeSlot(limits);
        if (limitSlot < 0) {
            m_fields.fail(idField, QStringLiteral("no free slot left in the thresholds sector"));
            return;
        }
        std::fill(limits.begin() + AtaSectors::slotOffset(limitSlot),
                  limits.begin() + AtaSectors::slotOffset(limitSlot) + 12, 0);
        limits[AtaSectors::slotOffset(limitSlot)] = id;
    }
    if (threshold)
        limits[AtaSectors::slotOffset(limitSlot) + 1] = quint8(*threshold);
}

std::optional<ValueSchedule> DescriptionParser::schedule(const QJsonValue &value, const QString &field, qint64 highest)
{
    if (value.isUndefined() || m_fields.failed())
        return std::nullopt;
    if (value.isDouble() || value.isString()) {
        const auto v = m_fields.integer(value, field, 0, highest);
        return v ? std::optional(ValueSchedule::constant(quint64(*v))) : std::nullopt;
    }
    auto readList = [&](const QJsonArray &items, const QString &listField, bool repeat) -> std::optional<ValueSchedule> {
        if (items.isEmpty()) {
            m_fields.fail(listField, QStringLiteral("the list of values is empty"));
            return std::nullopt;
        }
        QList<quint64> values;
        for (qsizetype i = 0; i < items.size(); ++i) {
            if (const auto v = m_fields.integer(items.at(i), JsonFields::item(listField, i), 0, highest))
                values.append(quint64(*v));
        }
        return m_fields.failed() ? std::nullopt : std::optional(ValueSchedule::list(values, repeat));
    };
    if (value.isArray())
        return readList(value.toArray(), field, false);
    if (!value.isObject()) {
        m_fields.fail(field, QStringLiteral("expected a number, a list of numbers or a schedule object, found %1")
                                 .arg(JsonFields::describe(value)));
        return std::nullopt;
    }

    const QJsonObject o = value.toObject();
    auto at = [&](const char *key) { return JsonFields::child(field, QLatin1String(key)); };
    if (o.contains(QLatin1String("values"))) {
        m_fields.checkKeys(o, field, {QStringLiteral("values"), QStringLiteral("repeat")});
        const bool repeat = m_fields.boolean(o.value(QLatin1String("repeat")), at("repeat")).value_or(false);
        const auto items = m_fields.array(o.value(QLatin1String("values")), at("values"));
        return items ? readList(*items, at("values"), repeat) : std::nullopt;
    }
    m_fields.checkKeys(o, field,
                       {QStringLiteral("start"), QStringLiteral("step"), QStringLiteral("every"), QStringLiteral("min"),
                        QStringLiteral("max")});
    const auto start = m_fields.integer(o.value(QLatin1String("start")), at("start"), 0, highest);
    const auto step = m_fields.integer(o.value(QLatin1String("step")), at("step"), -highest, highest);
    const auto every = m_fields.integer(o.value(QLatin1String("every")), at("every"), 1, 1'000'000);
    const auto lowest = m_fields.integer(o.value(QLatin1String("min")), at("min"), 0, highest);
    const auto highestValue = m_fields.integer(o.value(QLatin1String("max")), at("max"), 0, highest);
    if (m_fields.failed())
        return std::nullopt;
    if (!start || !step) {
        m_fields.fail(field, QStringLiteral("a schedule needs \"start\" and \"step\" (or \"values\")"));
        return std::nullopt;
    }
    if (lowest.value_or(0) > highestValue.value_or(highest)) {
        m_fields.fail(field, QStringLiteral("\"min\" is above \"max\""));
        return std::nullopt;
    }
    return ValueSchedule::line(*start, *step, quint64(every.value_or(1)), lowest.value_or(0),
                               highestValue.value_or(highest));
}

void DescriptionParser::readBehaviour(const QJsonValue &value)
{
    const QString field = QStringLiteral("behaviour");
    const auto behaviour = m_fields.section(value, field,
                                            {QStringLiteral("openFails"), QStringLiteral("firstPath"), QStringLiteral("failingQueries"),
                                             QStringLiteral("hang"), QStringLiteral("scanLocked")});
    if (!behaviour)
        return;
    auto at = [&](const char *key) { return JsonFields::child(field, QLatin1String(key)); };
    auto valueOf = [&](const char *key) { return behaviour->value(QLatin1String(key)); };

    m_disk.openFails = m_fields.boolean(valueOf("openFails"), at("openFails")).value_or(false);
    m_disk.scanLocked = m_fields.boolean(valueOf("scanLocked"), at("scanLocked")).value_or(false);
    m_disk.firstPath = int(m_fields.integer(valueOf("firstPath"), at("firstPath"), 0, 3).value_or(0));

    static const QList<std::pair<QString, int>> queries = {
        {QStringLiteral("geometry"), GeometryQuery},         {QStringLiteral("length"), LengthQuery},
        {QStringLiteral("deviceNumber"), DeviceNumberQuery}, {QStringLiteral("descriptor"), DescriptorQuery},
        {QStringLiteral("smartVersion"), SmartVersionQuery},
    };
    if (const auto failing = m_fields.array(valueOf("failingQueries"), at("failingQueries"))) {
        for (qsizetype i = 0; i < failing->size(); ++i) {
            const QString itemField = JsonFields::item(at("failingQueries"), i);
            const auto name = m_fields.string(failing->at(i), itemField);
            if (!name)
                continue;
            const auto known = std::find_if(queries.begin(), queries.end(),
                                            [&](const auto &q) { return q.first == *name; });
            if (known == queries.end()) {
                m_fields.fail(itemField, QStringLiteral("expected one of geometry, length, deviceNumber, descriptor, "
                                                        "smartVersion, found \"%1\"").arg(*name));
                continue;
            }
            m_disk.failingQueries |= known->second;
        }
    }

    if (const auto hang = m_fields.section(valueOf("hang"), at("hang"), {QStringLiteral("seconds"), QStringLiteral("polls")})) {
        const QString secondsField = JsonFields::child(at("hang"), QStringLiteral("seconds"));
        const auto seconds = m_fields.number(hang->value(QLatin1String("seconds")), secondsField, 0, 86400);
        if (!seconds && !m_fields.failed())
            m_fields.fail(secondsField, QStringLiteral("missing: how long a SMART read hangs"));
        m_disk.hangSeconds = seconds.value_or(0);
        const QString pollsField = JsonFields::child(at("hang"), QStringLiteral("polls"));
        if (const auto polls = m_fields.array(hang->value(QLatin1String("polls")), pollsField)) {
            for (qsizetype i = 0; i < polls->size(); ++i) {
                if (const auto poll = m_fields.integer(polls->at(i), JsonFields::item(pollsField, i), 0, kMaxRaw))
                    m_disk.hangPolls.append(quint64(*poll));
            }
        }
    }
}

void DescriptionParser::readVolumes(const QJsonValue &value)
{
    const QString field = QStringLiteral("volumes");
    const auto volumes = m_fields.array(value, field);
    if (!volumes)
        return;
    for (qsizetype i = 0; i < volumes->size(); ++i) {
        const QString itemField = JsonFields::item(field, i);
        const auto volume = m_fields.section(volumes->at(i), itemField,
                                             {QStringLiteral("label"), QStringLiteral("fileSystem"), QStringLiteral("serial"),
                                              QStringLiteral("root"), QStringLiteral("total"), QStringLiteral("free")});
        if (!volume)
            return;
        auto at = [&](const char *key) { return JsonFields::child(itemField, QLatin1String(key)); };
        auto valueOf = [&](const char *key) { return volume->value(QLatin1String(key)); };

        SimulatedVolume v;
        v.label = m_fields.string(valueOf("label"), at("label")).value_or(QString()).toStdString();
        v.fileSystem = m_fields.string(valueOf("fileSystem"), at("fileSystem")).value_or(QStringLiteral("NTFS")).toStdString();
        v.root = m_fields.string(valueOf("root"), at("root")).value_or(QString()).toStdString();
        // The serial reads as it is shown, "1A2B-3C4D", or as a plain number.
        const QJsonValue serial = valueOf("serial");
        if (serial.isString()) {
            bool ok = false;
            const QString hex = serial.toString().remove(QLatin1Char('-'));
            v.serialNumber = hex.size() <= 8 ? hex.toUInt(&ok, 16) : 0;
            if (!ok)
                m_fields.fail(at("serial"), QStringLiteral("expected eight hexadecimal digits such as \"1A2B-3C4D\", found %1")
                                                .arg(JsonFields::describe(serial)));
        } else {
            v.serialNumber = std::uint32_t(m_fields.integer(serial, at("serial"), 0, 0xFFFFFFFF).value_or(0));
        }
        const auto total = m_fields.integer(valueOf("total"), at("total"), 0, kMaxDiskBytes);
        if (!total && !m_fields.failed())
            m_fields.fail(at("total"), QStringLiteral("missing: the volume's size in bytes"));
        const auto free = m_fields.integer(valueOf("free"), at("free"), 0, total.value_or(kMaxDiskBytes));
        v.totalBytes = std::uint64_t(total.value_or(0));
        v.freeBytes = std::uint64_t(free.value_or(0));
        m_disk.volumes.push_back(v);
    }
}

void DescriptionParser::readSurface(const QJsonValue &value)
{
    const QString field = QStringLiteral("surface");
    const auto surface = m_fields.section(value, field, {QStringLiteral("badSectors"), QStringLiteral("readLatencyMs"),
                                                         QStringLiteral("slowSectors"), QStringLiteral("disappearsAt")});
    if (!surface)
        return;
    const QString latencyField = JsonFields::child(field, QStringLiteral("readLatencyMs"));
    m_disk.readLatencyMs = m_fields.number(surface->value(QLatin1String("readLatencyMs")), latencyField, 0, 10000).value_or(0);
    const qint64 lastSector = qint64(m_disk.sizeBytes / 512) - 1;
    const QJsonValue gone = surface->value(QLatin1String("disappearsAt"));
    if (!gone.isUndefined()) {
        if (const auto sector = m_fields.integer(gone, JsonFields::child(field, QStringLiteral("disappearsAt")), 0, lastSector))
            m_disk.disappearsAt = quint64(*sector);
    }
    readSlowSectors(surface->value(QLatin1String("slowSectors")), JsonFields::child(field, QStringLiteral("slowSectors")));

    const QString badField = JsonFields::child(field, QStringLiteral("badSectors"));
    const auto bad = m_fields.array(surface->value(QLatin1String("badSectors")), badField);
    if (!bad)
        return;
    for (qsizetype i = 0; i < bad->size(); ++i) {
        const QString itemField = JsonFields::item(badField, i);
        const QJsonValue item = bad->at(i);
        // One sector, or an inclusive [first, last] range.
        std::optional<qint64> first, last;
        if (item.isArray() && item.toArray().size() == 2) {
            first = m_fields.integer(item.toArray().at(0), JsonFields::item(itemField, 0), 0, lastSector);
            last = m_fields.integer(item.toArray().at(1), JsonFields::item(itemField, 1), first.value_or(0), lastSector);
        } else if (item.isDouble() || item.isString()) {
            first = last = m_fields.integer(item, itemField, 0, lastSector);
        } else {
            m_fields.fail(itemField, QStringLiteral("expected a sector number or a [first, last] pair, found %1")
                                         .arg(JsonFields::describe(item)));
        }
        if (first && last)
            m_disk.badSectors.emplace_back(quint64(*first), quint64(*last));
    }
}

void DescriptionParser::readSlowSectors(const QJsonValue &value, const QString &field)
{
    const auto slow = m_fields.array(value, field);
    if (!slow)
        return;
    const qint64 lastSector = qint64(m_disk.sizeBytes / 512) - 1;
    for (qsizetype i = 0; i < slow->size(); ++i) {
        const QString itemField = JsonFields::item(field, i);
        const auto range = m_fields.section(slow->at(i), itemField,
                                            {QStringLiteral("first"), QStringLiteral("last"), QStringLiteral("latencyMs")});
        if (!range)
            continue;
        if (!range->contains(QLatin1String("first")) || !range->contains(QLatin1String("last"))
            || !range->contains(QLatin1String("latencyMs"))) {
            m_fields.fail(itemField, QStringLiteral("needs first, last and latencyMs"));
            return;
        }
        const auto first = m_fields.integer(range->value(QLatin1String("first")), JsonFields::child(itemField, QStringLiteral("first")), 0, lastSector);
        const auto last = m_fields.integer(range->value(QLatin1String("last")), JsonFields::child(itemField, QStringLiteral("last")),
                                           first.value_or(0), lastSector);
        const auto latency = m_fields.number(range->value(QLatin1String("latencyMs")),
                                             JsonFields::child(itemField, QStringLiteral("latencyMs")), 0, 10000);
        if (first && last && latency)
            m_disk.slowSectors.push_back(SlowSectors{quint64(*first), quint64(*last), *latency});
    }
}

QString lineAndColumn(const QByteArray &bytes, int offset)
{
    const QByteArray before = bytes.left(offset);
    const int line = int(before.count('\n')) + 1;
    const int column = int(offset - (before.lastIndexOf('\n') + 1)) + 1;
    return QStringLiteral("line %1, column %2").arg(line).arg(column);
}

} // namespace

namespace SimulatedDiskReader {

std::optional<SimulatedDisk> readDescription(const QString &path, QString *error)
{
    auto fail = [error](const QString &why) -> std::optional<SimulatedDisk> {
        if (error)
            *error = why;
        return std::nullopt;
    };
    // A FIFO would block the open; a device might never end.
    if (const QString what = LocalFile::notRegular(path); !what.isEmpty())
        return fail(QStringLiteral("is %1").arg(what));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(file.errorString());
    const QByteArray bytes = file.read(kMaxDescriptionSize + 1);
    if (bytes.size() > kMaxDescriptionSize)
        return fail(QStringLiteral("is %1 bytes long, too large for a disk description (at most 1 MiB)")
                        .arg(std::max(file.size(), qint64(bytes.size()))));

    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return fail(QStringLiteral("%1: %2").arg(lineAndColumn(bytes, parseError.offset), parseError.errorString()));
    if (!document.isObject())
        return fail(QStringLiteral("a disk description is one JSON object { ... }"));
    return DescriptionParser(path).parse(document.object(), error);
}

std::optional<SimulatedDisk> readDump(const QString &path, QString *error)
{
    const auto dump = SmartDump::load(path, error);
    if (!dump)
        return std::nullopt;
    SimulatedDisk disk;
    disk.sourceFile = path;
    takeDump(disk, *dump, path);
    return disk;
}

bool looksLikeDump(const QString &path)
{
    if (!LocalFile::notRegular(path).isEmpty())
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray tag = file.read(4);
    return tag == "IDFY" || tag == "SMST" || tag == "SMDT" || tag == "SMTH";
}

} // namespace SimulatedDiskReader
