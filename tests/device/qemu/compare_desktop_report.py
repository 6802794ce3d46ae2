#!/usr/bin/env python3
"""Checks the report of the desktop boot of scripts/qemu-helper-test.sh.

kvuser's session must be one logind calls active and local on seat0, with no polkit rule of the
test's left; Korvane, started from its menu entry in that session, must have started the helper
by D-Bus activation and been allowed by polkit on those grounds alone, and its window must show
the disk: its identity on the Disk Info page and smartctl's attributes on the SMART Info page.
The packaged korvane-monitor unit must be running and logging, and the disk image unchanged.
"""

import argparse
import json
import os
import re
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from compare_vm_report import Checker, add_disk_arguments, read_report, smartctl_of  # noqa: E402

HELPER = "org.korvane.Helper1"


def key_values(text):
    """Blocks of key=value lines (loginctl show-session, systemctl show), split at blank lines."""
    blocks, block = [], {}
    for line in text.splitlines() + [""]:
        if "=" in line:
            key, value = line.split("=", 1)
            block[key.strip()] = value.strip()
        elif block:
            blocks.append(block)
            block = {}
    return blocks


def bus_messages(text):
    """dbus-monitor's output as (header, body) pairs: a header line, then its indented body."""
    messages = []
    for line in text.splitlines():
        if re.match(r"(method call|method return|error|signal) ", line):
            messages.append([line, ""])
        elif messages:
            messages[-1][1] += line.strip() + "\n"
    return messages


def header_field(header, name):
    found = re.search(rf"\b{name}=(\S+)", header)
    return found.group(1).rstrip(";") if found else None


def polkit_answers(messages):
    """(action, is_authorized) for each CheckAuthorization the bus carried, from its reply."""
    answers = []
    for header, body in messages:
        if "member=CheckAuthorization" not in header:
            continue
        action = re.search(r'string "(org\.korvane\.[a-z-]+)"', body)
        caller, serial = header_field(header, "sender"), header_field(header, "serial")
        for reply, reply_body in messages:
            if (reply.startswith("method return") and header_field(reply, "reply_serial") == serial
                    and header_field(reply, "destination") == caller):
                first = re.search(r"boolean (true|false)", reply_body)
                answers.append((action.group(1) if action else None, first and first.group(1) == "true"))
    return answers


def check_session(c, report):
    c.context = "session: "
    sessions = [s for s in key_values(report.get("sessions", "")) if s.get("Name") == "kvuser"]
    c.equal("kvuser's logind sessions", len(sessions), 1)
    for s in sessions[:1]:
        for key, want in (("Seat", "seat0"), ("TTY", "tty1"), ("Active", "yes"), ("Remote", "no"),
                          ("Class", "user"), ("State", "active")):
            c.equal(f"session {s.get('Id')} {key}", s.get(key), want)
    c.equal("polkit rules naming Korvane or kvuser", report.get("polkit-rules", "").strip(), "")
    process = report.get("korvane-process", "")
    c.true(f"Korvane runs as kvuser: {process!r}", re.search(r"^kvuser\s", process, re.M) is not None)


def check_helper_traffic(c, report):
    c.context = "helper: "
    activation = report.get("activation", "")
    c.true(f"the bus activated the helper for kvuser's Korvane: {activation!r}",
           re.search(rf"Activating service name='{HELPER}'.*uid=1000 .*comm=\"[^\"]*Korvane", activation)
           is not None and f"Successfully activated service '{HELPER}'" in activation)
    callers = report.get("helper-callers", "").split("\n")
    callers = [line for line in callers if line.strip()]
    c.true(f"every caller of the helper is Korvane: {callers!r}",
           callers and all(line.endswith("comm=Korvane") for line in callers))
    messages = bus_messages(report.get("bus", ""))
    members = {header_field(h, "member") for h, _ in messages if f"destination={HELPER}" in h}
    for member in ("ListDisks", "AtaCommand"):
        c.true(f"Korvane called {member}; it called {sorted(m for m in members if m)}", member in members)
    refused = [h for h, _ in messages if h.startswith("error") and "Helper1.Error" in h]
    c.equal("errors from the helper", refused, [])
    answers = polkit_answers(messages)
    c.true(f"polkit allowed org.korvane.read-smart: {answers!r}", ("org.korvane.read-smart", True) in answers)
    c.true(f"polkit refused nothing: {answers!r}", answers and all(allowed for _, allowed in answers))


def page_cells(page):
    cells = [cell for table in page.get("tables", []) for row in table["rows"] for cell in row]
    return cells + page.get("texts", [])


def check_window(c, report, smart, args):
    c.context = "window: "
    try:
        window = json.loads(report.get("window", ""))
    except ValueError as e:
        c.true(f"unreadable AT-SPI report ({e}): {report.get('window', '')[:300]!r}", False)
        return
    c.true(f"Korvane's window through AT-SPI: {window.get('window')!r}", "Korvane" in (window.get("window") or ""))
    pages = window.get("pages", {})
    for name in ("Disk Info", "SMART Info"):
        c.equal(f"switching to {name}", pages.get(name, {}).get("problem", "not reported"), None)
    info = page_cells(pages.get("Disk Info", {}))
    for what in ("model", "serial", "firmware"):
        value = getattr(args, what)
        c.true(f"Disk Info shows the {what} {value!r}", any(value in cell for cell in info))
    rows = [row for table in pages.get("SMART Info", {}).get("tables", []) for row in table["rows"]]
    attributes = smart.get("ata_smart_attributes", {}).get("table", [])
    c.true("smartctl lists attributes", len(attributes) > 0)
    for want in attributes:
        shown = [row for row in rows if row and row[0] == str(want["id"])]
        c.true(f"SMART Info shows attribute {want['id']} with value {want['value']}: rows {shown!r}",
               len(shown) == 1 and str(want["value"]) in shown[0][1:])


def check_monitor_unit(c, report, args):
    c.context = "korvane-monitor.service: "
    unit = (key_values(report.get("monitor-unit", "")) or [{}])[0]
    for key, want in (("ActiveState", "active"), ("SubState", "running"), ("NRestarts", "0")):
        c.equal(key, unit.get(key), want)
    journal = report.get("monitor-journal", "")
    c.true(f"the journal has the session's start: {journal[:400]!r}", "Session started" in journal)
    # The event log's SMART records carry the serial; one means the monitor read the disk.
    log = report.get("monitor-event-log", "")
    c.true(f"the event log has a SMART record of the disk: {log[:400]!r}",
           re.search(rf"\]!\[SMART\]!\[\d+\]!\[{re.escape(args.serial)}\]", log) is not None)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    add_disk_arguments(parser)
    parser.add_argument("--screenshots", nargs="*", default=[])
    args = parser.parse_args()

    c = Checker("desktop")
    c.subject = "the VM says"
    report = read_report(c, args.report)
    if report is None:
        return c.finish()
    smart = smartctl_of(c, report)
    check_session(c, report)
    check_helper_traffic(c, report)
    check_window(c, report, smart, args)
    check_monitor_unit(c, report, args)
    c.context = "screenshots: "
    for shot in args.screenshots:
        c.true(f"{shot} was taken", os.path.exists(shot) and os.path.getsize(shot) > 10000)
    c.context = "disk: "
    c.equal("image checksum after the VM", args.after, args.before)
    return c.finish()


if __name__ == "__main__":
    sys.exit(main())
