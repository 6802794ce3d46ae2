#!/usr/bin/env python3
"""Checks the report of the disk helper's VM (scripts/qemu-helper-test.sh).

An ordinary user's korvanectl, reading through the helper, must agree with smartctl run as root;
every request the helper must refuse must come back as the error that says why; and the disk
image must be byte for byte what it was before the VM ran.
"""

import argparse
import os
import re
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from compare_vm_report import (Checker, add_disk_arguments, check_clean_scan, check_identity, check_smart,  # noqa: E402
                               disks_of, read_report, smartctl_of)

REFUSED = "org.korvane.Helper1.Error.Refused"
NOT_AUTHORISED = "org.korvane.Helper1.Error.NotAuthorized"

# Section, the error it must end in, and a piece of the message that says why.
REFUSALS = [
    ("write-sectors", REFUSED, "ATA command 0x30"),
    ("security-erase", REFUSED, "ATA command 0xF4"),
    ("read-outside", REFUSED, "outside the disk"),
    ("unlisted", REFUSED, "/dev/sda1 is not a disk the helper found"),
    ("unauthorised", NOT_AUTHORISED, "org.korvane.read-smart"),
    ("unauthorised-command", NOT_AUTHORISED, "org.korvane.read-smart"),
]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    add_disk_arguments(parser)
    args = parser.parse_args()

    c = Checker("helper")
    report = read_report(c, args.report)
    if report is None:
        return c.finish()

    c.context = "kvuser through the helper: "
    c.equal("korvanectl exit status", report.get("korvanectl-exit", "").strip(), "0")
    # The root file system's virtio disk is named as one Korvane does not read; nothing else.
    stray = [l for l in report.get("korvanectl-stderr", "").splitlines() if l.strip() and "/dev/vda" not in l]
    c.equal("korvanectl stderr besides the virtio disk", stray, [])
    smart = smartctl_of(c, report)
    for disk in disks_of(c, report, "korvanectl")[:1]:
        check_identity(c, disk, smart, args)
        check_smart(c, disk, smart)

    c.context = "helper: "
    c.true(f"IDENTIFY through the helper answered: {report.get('identify', '')[:300]!r}",
           re.search(r'"answered"\s*variant\s*boolean true', report.get("identify", "")) is not None)
    inside = report.get("read-inside", "")
    c.true(f"a sector inside the disk reads back the pattern: {inside[:300]!r}",
           "exit 0" in inside and "00 01 02 03 04 05" in inside)
    for section, error, why in REFUSALS:
        text = report.get(section, "")
        c.true(f"{section}: expected {error} saying {why!r}, got {text[:400]!r}",
               error in text and why in text and "exit 0" not in text)
    c.context = "kvuser's scan through the helper: "
    check_clean_scan(c, report, "scan", args.capacity // 512)
    c.equal("file capabilities or setuid bits on Korvane's programs",
            report.get("capabilities", "").strip(), "")
    c.context = "disk: "
    c.equal("image checksum after the VM", args.after, args.before)
    return c.finish()


if __name__ == "__main__":
    sys.exit(main())
