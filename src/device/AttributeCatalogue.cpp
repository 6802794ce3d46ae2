#include "AttributeCatalogue.h"

// The texts are shown as they are: the description pane renders their tags,
// and the leading spaces indent the text there.

namespace AttributeCatalogue {

QString name(quint32 id)
{
    switch (id) {
    case 1:
        return QStringLiteral("Raw read error rate");
    case 2:
        return QStringLiteral("Throughput performance");
    case 3:
        return QStringLiteral("Spinup time");
    case 4:
        return QStringLiteral("Start/Stop count");
    case 5:
        return QStringLiteral("Reallocated sector count");
    case 6:
        return QStringLiteral("Read channel margin");
    case 7:
        return QStringLiteral("Seek error rate");
    case 8:
        return QStringLiteral("Seek timer performance");
    case 9:
        return QStringLiteral("Power-on hours count");
    case 10:
        return QStringLiteral("Spinup retry count");
    case 11:
        return QStringLiteral("Calibration retry count");
    case 12:
        return QStringLiteral("Power cycle count");
    case 13:
        return QStringLiteral("Soft read error rate");
    case 190:
        return QStringLiteral("Airflow Temperature/Temperature Difference from 100");
    case 191:
        return QStringLiteral("G-sense error rate");
    case 192:
        return QStringLiteral("Power-off retract count");
    case 193:
        return QStringLiteral("Load/Unload cycle count");
    case 194:
        return QStringLiteral("Temperature");
    case 195:
        return QStringLiteral("Hardware ECC recovered");
    case 196:
        return QStringLiteral("Reallocation count");
    case 197:
        return QStringLiteral("Current pending sector count");
    case 198:
        return QStringLiteral("Offline scan uncorrectable count");
    case 199:
        return QStringLiteral("UDMA CRC error rate");
    case 200:
        return QStringLiteral("Write error rate");
    case 202:
        return QStringLiteral("Data Address Mark errors");
    case 203:
        return QStringLiteral("Run out cancel");
    case 204:
        return QStringLiteral("Soft ECC correction");
    case 205:
        return QStringLiteral("Thermal asperity rate (TAR)");
    case 206:
        return QStringLiteral("Flying height");
    case 207:
        return QStringLiteral("Spin high current");
    case 208:
        return QStringLiteral("Spin buzz");
    case 209:
        return QStringLiteral("Offline seek performance");
    case 220:
        return QStringLiteral("Disk shift");
    case 222:
        return QStringLiteral("Loaded hours");
    case 223:
        return QStringLiteral("Load/unload retry count");
    case 224:
        return QStringLiteral("Load friction");
    case 226:
        return QStringLiteral("Load-in time");
    case 227:
        return QStringLiteral("Torque amplification count");
    case 230:
        return QStringLiteral("GMR head amplitude");
    case 240:
        return QStringLiteral("Head flying hours");
    case 250:
        return QStringLiteral("Read error retry rate");
    default:
        return QStringLiteral("Unknown attribute");
    }
}

// Descriptions also exist for a few IDs the name lookup does not know
// (201, 221, 225, 228, 231): those rows show "Unknown attribute" with a real
// description.
QString description(quint32 id)
{
    switch (id) {
    case 1:
        return QStringLiteral("  Indicates the rate of hardware read errors that occurred when reading data from a disk surface. Any number indicates a problem with either disk surface or read/write heads. <B>(Better RAW Value LESS)</B></p>");
    case 2:
        return QStringLiteral("  Overall (general) throughput performance of a hard disk drive. If the value of this attribute is decreasing thereis a high probability that there is a problem with your disk. <B>(Better RAW Value MORE)</B></p>");
    case 3:
        return QStringLiteral("  Average time of spindle spin up (from zero RPM to fully operational). <B>(Better RAW Value LESS)</B></p>");
    case 4:
        return QStringLiteral("  Number of spindle start/stop cycles.</p>");
    case 5:
        return QStringLiteral("  Count of reallocated sectors. When the hard drive finds a read/write/verification error, it marks this sector as \"reallocated\" and transfers data to a special reserved area (spare area). This process is also known as remapping and \"reallocated\" sectors are called remaps. This is why, on modern hard disks, \"bad blocks\" cannot be found while testing the surface - all bad blocks are hidden in reallocated sectors. However, the more sectors that are reallocated, the more read/write speed will decrease. <B>(Better RAW Value LESS)</B>");
    case 6:
        return QStringLiteral(" Margin of a channel while reading data. The function of this attribute is not specified.");
    case 7:
        return QStringLiteral("  Rate of seek errors of the magnetic heads. If there is a failure in the mechanical positioning system, a servo damage or a thermal widening of the hard disk, seek errors arise. More seek errors indicates a worsening condition of a disk surface and the mechanical subsystem. <B>(Better RAW Value LESS)</B>");
    case 8:
        return QStringLiteral("  Average performance of seek operations of the magnetic heads. If this attribute is decreasing, it is a sign of problems in the mechanical subsystem. <B>(Better Value LESS)</B>");
    case 9:
        return QStringLiteral("  Count of hours in power-on state. The raw value of this attribute shows total count of hours (or minutes, or seconds, depending on manufacturer) in power-on state. A decrease of this attribute value to the critical level (threshold) indicates a decrease of the MTBF (Mean Time Between Failure). However, in reality, even if the MTBF value falls to zero, it does not mean the MTBF resource is completely exhausted and the drive will not function normally.");
    case 10:
        return QStringLiteral(" Count of retry of spin start attempts. This attribute stores a total count of the spin start attempts to reach the fully operational speed (under the condition that the first attempt was unsuccessful). An increase of this attribute value is a sign of problems in the hard disk mechanical subsystem. <B>(Better RAW Value LESS)</B>");
    case 11:
        return QStringLiteral("  This attribute indicates the number of times recalibration was requested (under the condition that the first attempt was unsuccessful). A decrease of this attribute value is a sign of problems in the hard disk mechanical subsystem. <B>(Better Value MORE)</B>");
    case 12:
        return QStringLiteral("  This attribute indicates the count of full hard disk power on/off cycles.");
    case 13:
        return QStringLiteral("  Uncorrected read errors reported to the operating system. If the value is non-zero, you should backup your data. <B>(Better RAW Value LESS)");
    case 190:
        return QStringLiteral("  Airflow temperature on Western Digital HD (Same as Current internal temperature, but current value is 50 less.) Value is equal to (100 - temp Celsius) allowing manufacturer to set a minimum threshold which corresponds ta a maximum temperature on Seagate HD");
    case 191:
        return QStringLiteral("  Fequency of mistakes as a result of impact loads.");
    case 192:
        return QStringLiteral("  Number of times the heads are loaded off the media. Heads can be unloaded without actually powering off. (or Emergency Retract Cycle count - Fujitsu)");
    case 193:
        return QStringLiteral("  Count of load/unload cycles into head landing zone position.");
    case 194:
        return QStringLiteral("  Current internal temperature. <B>(Better RAW Value LESS)");
    case 195:
        return QStringLiteral("  Time between ECC-corrected errors. It goes up and down, low is bad. <B>(Better Value MORE)");
    case 196:
        return QStringLiteral("  Count of remap operations. The raw value of this attribute shows the total number of attempts to transfer data from reallocated sectors to a spare area. Both successful & unsuccessful attempts are counted. <B>(Better RAW Value LESS)");
    case 197:
        return QStringLiteral("  Number of \"unstable\" sectors (waiting to be remapped). If the unstable sector is subsequently written or read successfully, this value is decreased and the sector is not remapped. Read errors on the sector will not remap the sector, it will only be remapped on a failed write attempt. This can be problematic to test because cached writes will not remap the sector, only direct I/O writes to the disk. <B>(Better RAW Value LESS)");
    case 198:
        return QStringLiteral("  The total number of uncorrectable errors when reading/writing a sector. A rise in the value of this attribute indicates defects of the disk surface and/or problems in the mechanical subsystem. <B>(Better RAW Value LESS)");
    case 199:
        return QStringLiteral("  The number of errors in data transfer via the interface cable as determined by ICRC (Interface Cyclic Redundancy Check). <B>(Better RAW Value LESS)");
    case 200:
        return QStringLiteral("  The total number of errors when writing a sector. <B>(Better RAW Value LESS)");
    case 201:
        return QStringLiteral("  Number of off-track errors. If non-zero, make a backup. <B>(Better RAW Value LESS)");
    case 202:
        return QStringLiteral("  Number of Data Address Mark errors (or vendor-specific).");
    case 203:
        return QStringLiteral("  Number of ECC errors. <B>(Better RAW Value LESS)");
    case 204:
        return QStringLiteral("  Number of errors corrected by software ECC.");
    case 205:
        return QStringLiteral("  Number of thermal asperity errors.");
    case 206:
        return QStringLiteral("  Height of heads above the disk surface.");
    case 207:
        return QStringLiteral("  Amount of high current used to spin up the drive.");
    case 208:
        return QStringLiteral("  Number of buzz routines to spin up the drive.");
    case 209:
        return QStringLiteral("  Drive's seek performance during offline.");
    case 220:
        return QStringLiteral("  Shift of disk is possible as a result of strong shock loading in the store, as a result of falling (or) temperature. <B>(Better RAW Value LESS)");
    case 221:
        return QStringLiteral("  Number of errors as a result of impact loads as detected by a shock sensor. The number of errors resulting from externally-induced shock & vibration. <B>(Better RAW Value LESS)");
    case 222:
        return QStringLiteral("  Time spent operating under data load (movement of magnetic head armature).");
    case 223:
        return QStringLiteral("  Loading on drive caused by numerous recurrences of operations, like reading, recording, positioning of heads, etc.");
    case 224:
        return QStringLiteral("  Load on drive caused by friction in mechanical parts of the store.");
    case 225:
        return QStringLiteral("  Total number of load cycles.");
    case 226:
        return QStringLiteral("  Total time of loading on the magnetic heads actuator (time not spent in parking area).");
    case 227:
        return QStringLiteral("  Number of attempts to compensate for platter speed variations.");
    case 228:
        return QStringLiteral("  The number of times the magnetic armature was retracted automatically as a result of cutting power.");
    case 230:
        return QStringLiteral("  Amplitude of \"thrashing\" (distance of repetitive forward/reverse head motion).");
    case 231:
        return QStringLiteral("  Temperature of a drive.");
    case 240:
        return QStringLiteral("  Time while head is positioning.");
    case 250:
        return QStringLiteral("  Number of errors while reading from a disk. <B>(Better RAW Value LESS)");
    default:
        return QStringLiteral(" Unknown attribute");
    }
}

Category category(const SmartAttribute &attribute)
{
    if (attribute.advisory == 0)
        return attribute.performance == 0 ? Category::Health : Category::HealthPerformance;
    return attribute.performance == 0 ? Category::Information : Category::Performance;
}

QString iconName(Category category)
{
    switch (category) {
    case Category::Health:
        return QStringLiteral("attr_health");
    case Category::HealthPerformance:
        return QStringLiteral("attr_h_p");
    case Category::Information:
        return QStringLiteral("attr_info");
    case Category::Performance:
        return QStringLiteral("attr_perf");
    }
    return QString();
}

} // namespace AttributeCatalogue
