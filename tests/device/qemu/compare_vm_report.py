#!/usr/bin/env python3
"""Checks what korvanectl saw of the emulated disk in one VM.

The report holds sections ("=== name" lines) written by the VM: korvanectl's
JSON and its stderr, smartctl's JSON for the same disk, and the statfs figures
of the mounted volume. korvanectl must agree with smartctl on every attribute
and with the values the VM was started with on identity, capacity and volume.
"""

import argparse
import json
import sys


def sections(text):
    found = {}
    name = None
    for line in text.splitlines():
        if line.startswith("=== "):
            name = line[4:].strip()
            found[name] = []
        elif name is not None:
            found[name].append(line)
    return {k: "\n".join(v) for k, v in found.items()}


def decoded_raw(attribute_id, raw48):
    # Temperature (194) keeps only its first word, in tenths when above 100.
    if attribute_id == 194:
        word = raw48 & 0xFFFF
        return word // 10 if word > 100 else word
    return raw48


class Checker:
    def __init__(self, machine):
        self.machine = machine
        self.failures = []
        self.checked = 0
        self.context = "root: "  # whose run of korvanectl is being checked
        self.subject = "korvanectl"  # what the actual values of equal() come from

    def equal(self, what, actual, expected):
        self.checked += 1
        if actual != expected:
            self.failures.append(f"{self.context}{what}: {self.subject} {actual!r}, expected {expected!r}")

    def true(self, what, condition):
        self.checked += 1
        if not condition:
            self.failures.append(self.context + what)

    def finish(self):
        for f in self.failures:
            print(f"qemu-ata-test: {self.machine}: FAIL {f}")
        verdict = "FAIL" if self.failures else "ok"
        print(f"qemu-ata-test: {self.machine}: {verdict} ({self.checked} checks, {len(self.failures)} failed)")
        return 1 if self.failures else 0


def read_report(c, path):
    """The sections of the report at path, or None (a failed check) when there is none."""
    try:
        with open(path, encoding="utf-8", errors="replace") as f:
            report = sections(f.read())
    except OSError as e:
        c.true(f"no report from the VM: {e}", False)
        return None
    c.true(f"the VM report is cut short (no end marker); sections: {sorted(report)}", "end" in report)
    return report


def smartctl_of(c, report):
    """smartctl's JSON from the report's "smartctl" section; {} (a failed check) when unreadable."""
    try:
        return json.loads(report.get("smartctl", ""))
    except ValueError as e:
        c.true(f"unreadable smartctl JSON ({e})", False)
        return {}


def add_disk_arguments(parser):
    """The options of the checks of the helper's VM boots: the report and what the disk was made with."""
    for option in ("report", "model", "serial", "firmware", "before", "after"):
        parser.add_argument("--" + option, required=True)
    parser.add_argument("--capacity", type=int, required=True)


def disks_of(c, report, section):
    try:
        disks = json.loads(report.get(section, "")).get("disks", [])
    except ValueError as e:
        c.true(f"unreadable JSON from korvanectl ({e}): {report.get(section, '')[:500]!r}", False)
        disks = []
    c.equal("number of disks", len(disks), 1)
    return disks


def check_identity(c, disk, smart, args):
    c.equal("devicePath", disk.get("devicePath"), "/dev/sda")
    c.equal("diskNumber", disk.get("diskNumber"), 0)
    c.equal("mediaType (fixed)", disk.get("mediaType"), 12)
    c.equal("model", disk.get("model"), args.model)
    c.equal("serial", disk.get("serial"), args.serial)
    c.equal("firmware", disk.get("firmware"), args.firmware)
    c.equal("capacityBytes", disk.get("capacityBytes"), args.capacity)
    c.equal("model as smartctl reads it", disk.get("model"), smart.get("model_name"))
    c.equal("serial as smartctl reads it", disk.get("serial"), smart.get("serial_number"))
    c.equal("firmware as smartctl reads it", disk.get("firmware"), smart.get("firmware_version"))
    c.equal("capacity as smartctl reads it", disk.get("capacityBytes"),
            smart.get("user_capacity", {}).get("bytes"))
    c.true(f"smartVersion/smartRevision should be numbers, got {disk.get('smartVersion')!r}/"
           f"{disk.get('smartRevision')!r}",
           str(disk.get("smartVersion", "")).isdigit() and str(disk.get("smartRevision", "")).isdigit())


def check_smart(c, disk, smart):
    support = smart.get("smart_support", {})
    c.equal("smartSupported", disk.get("smartSupported"), 1 if support.get("available") else 0)
    c.equal("smartEnabled", disk.get("smartEnabled"), 1 if support.get("enabled") else 0)
    c.equal("smartState (data and thresholds read)", disk.get("smartState"), 1)
    c.true("smartctl should see a passed health status", smart.get("smart_status", {}).get("passed") is True)

    expected = smart.get("ata_smart_attributes", {}).get("table", [])
    actual = disk.get("attributes", [])
    c.true("smartctl reported no attributes", len(expected) > 0)
    c.equal("attribute ids in order", [a.get("id") for a in actual], [a["id"] for a in expected])
    for want, got in zip(expected, actual):
        ident = want["id"]
        c.equal(f"attribute {ident} current", got.get("current"), want["value"])
        c.equal(f"attribute {ident} worst", got.get("worst"), want["worst"])
        c.equal(f"attribute {ident} threshold", got.get("threshold"), want["thresh"])
        c.equal(f"attribute {ident} flags", got.get("flags"), want["flags"]["value"])
        c.equal(f"attribute {ident} raw", got.get("raw"), decoded_raw(ident, want["raw"]["value"]))


def check_volume(c, disk, statfs, args):
    volumes = disk.get("volumes", [])
    c.equal("volumes on the disk", [v.get("volumeName") for v in volumes], ["/dev/sda1"])
    if not volumes:
        return
    v = volumes[0]
    c.equal("volume rootPath", v.get("rootPath"), args.mount)
    c.equal("volume label", v.get("label"), args.label)
    c.equal("volume fileSystem", v.get("fileSystem"), "ext2")
    hexdigits = args.uuid.replace("-", "")[:8].upper()
    c.equal("volume serialText", v.get("serialText"), hexdigits[:4] + "-" + hexdigits[4:])
    c.equal("volume diskNumber", v.get("diskNumber"), 0)
    fields = statfs.split()
    c.true(f"statfs of the mounted volume unreadable: {statfs!r}", len(fields) == 3)
    if len(fields) == 3:
        block, total, available = (int(x) for x in fields)
        c.equal("volume totalBytes", v.get("totalBytes"), block * total)
        c.equal("volume freeBytes", v.get("freeBytes"), block * available)


def scan_of(c, report, section):
    """The JSON object korvanectl scan printed in the section, or None (a failed check)."""
    try:
        return json.loads(report.get(section, ""))
    except ValueError as e:
        c.true(f"unreadable scan JSON ({e}): {report.get(section, '')[:400]!r}", False)
        return None


def check_clean_scan(c, report, section, sectors):
    """The scan in the section ended well, read every sector and found nothing bad."""
    c.equal("exit status", report.get(section + "-exit", "").strip(), "0")
    scan = scan_of(c, report, section)
    if scan is not None:
        c.equal("sectorsScanned", scan.get("sectorsScanned"), sectors)
        c.equal("blocksScanned", scan.get("blocksScanned"), -(-sectors // 61440))
        c.equal("badRanges", scan.get("badRanges"), [])
        c.equal("openFailed", scan.get("openFailed"), False)


def check_scan(c, report, args):
    """The surface scan read every sector, found nothing bad, and changed nothing."""
    c.context = "scan: "
    c.equal("stderr", report.get("scan-stderr", "").strip(), "")
    sectors = args.capacity // 512
    check_clean_scan(c, report, "scan", sectors)
    c.context = "scan through a read-only node: "
    text = report.get("scan-readonly-node", "")
    c.true(f"completes: {text!r}", f"Scan Disk Complete\nTotal Blocks scanned: {-(-sectors // 61440)}\n"
                                   f"Total Sectors scanned: {sectors}\n" in text)
    c.equal("exit status", report.get("scan-readonly-node-exit", "").strip(), "0")
    before = report.get("scan-before", "").split()[:1]
    c.context = "scan: "
    c.true(f"the disk's checksum is unchanged: {before} before, {report.get('scan-after', '').split()[:1]} after",
           before and before == report.get("scan-after", "").split()[:1])
    check_bad_scan(c, report)


def check_bad_scan(c, report):
    """Sectors 4660-4669 of the scsi_debug disk fail: the scan names them, in 64 KiB pieces and
    in single sectors. The kernel reads a block device a 4 KiB page at a time, so a single-sector
    scan also loses the other sectors of the two pages (4656-4671), and nothing else."""
    for size, first, last in ((65536, 4608, 4735), (512, 4656, 4671)):
        c.context = f"scan of a disk with bad sectors, {size}-byte pieces: "
        scan = scan_of(c, report, f"scan-bad-{size}")
        if scan is None:
            continue
        bad = set()
        for pair in scan.get("badRanges", []):
            bad.update(range(pair[0], pair[1] + 1))
        c.true(f"every bad sector found: {scan.get('badRanges')}", set(range(4660, 4670)) <= bad)
        c.true(f"nothing outside {first}-{last}: {scan.get('badRanges')}", bad <= set(range(first, last + 1)))
        c.equal("sectorsScanned", scan.get("sectorsScanned"), 81920)
        c.equal("badBlocks", scan.get("badBlocks"), 1)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for option in ("machine", "report", "model", "serial", "firmware", "label", "uuid", "mount"):
        parser.add_argument("--" + option, required=True)
    parser.add_argument("--capacity", type=int, required=True)
    args = parser.parse_args()

    c = Checker(args.machine)
    report = read_report(c, args.report)
    if report is None:
        return c.finish()

    try:
        smart = json.loads(report.get("smartctl", ""))
    except ValueError as e:
        c.true(f"unreadable smartctl JSON ({e}); report sections: {sorted(report)}", False)
        return c.finish()

    c.equal("korvanectl exit status", report.get("korvanectl-exit", "").strip(), "0")
    # Run as root nothing may go wrong: no access problem, no warning, no sanitizer report.
    c.equal("korvanectl stderr", report.get("korvanectl-stderr", "").strip(), "")
    # An ordinary user running a copy given cap_sys_rawio and cap_dac_override
    # sees everything root sees.
    for section in ("korvanectl", "capabilities"):
        c.context = "root: " if section == "korvanectl" else "capabilities: "
        for disk in disks_of(c, report, section)[:1]:
            check_identity(c, disk, smart, args)
            check_smart(c, disk, smart)
            check_volume(c, disk, report.get("statfs", "").strip(), args)

    # Write access alone lets ATA PASS-THROUGH (12) through, so the disk is
    # identified; SMART needs the capability.
    c.context = "writer: "
    writer = disks_of(c, report, "writer")
    if writer:
        check_identity(c, writer[0], smart, args)

    # Without any grant the user is told which disk and how to fix it, never
    # handed a silent empty list.
    c.context = "no access: "
    text = report.get("unprivileged", "")
    c.true(f"names /dev/sda and the fix: {text!r}", "/dev/sda" in text and "korvane package" in text)
    check_scan(c, report, args)
    return c.finish()


if __name__ == "__main__":
    sys.exit(main())
