#!/usr/bin/python3
"""Reads Korvane's window through AT-SPI, as a screen reader would, inside the desktop VM.

Waits for the window, then for each page named on the command line (by its tab's text) switches
to it by the tab's own action, waits until the page's tables have rows, writes every
table's rows and the page's other texts to the JSON file given, and takes a screenshot of the
screen with xwd. Run by tests/device/qemu/desktop_session.sh as the session's user.

    desktop_window.py OUT.json SHOT_PREFIX TITLE PAGE...

Screenshots are SHOT_PREFIX followed by the page's position on the command line and ".xwd".
"""

import json
import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402


def safely(call, default=None):
    """call's answer, or default when the object went away meanwhile (the window is still
    filling in as the disks are found, and Qt drops and makes accessibles as it does)."""
    try:
        return call()
    except GLib.Error:
        return default


def walk_children(node):
    """node's children that are still there."""
    for i in range(safely(node.get_child_count, 0)):
        child = safely(lambda: node.get_child_at_index(i))
        if child is not None:
            yield child


def walk(node, depth=0):
    """Every accessible below node, depth first; a subtree that vanishes mid-walk is skipped."""
    yield node
    if depth > 40:
        return
    for child in walk_children(node):
        yield from walk(child, depth + 1)


def find_window(title, seconds):
    """The accessible application and window whose title holds title, once there is one."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        for app in walk_children(Atspi.get_desktop(0)):
            for window in walk_children(app):
                if title in (safely(window.get_name) or ""):
                    return safely(app.get_name), window
        time.sleep(1)
    return None, None


def table_rows(table):
    rows = []
    for r in range(Atspi.Table.get_n_rows(table)):
        row = []
        for c in range(Atspi.Table.get_n_columns(table)):
            cell = Atspi.Table.get_accessible_at(table, r, c)
            row.append(cell.get_name() if cell is not None else "")
        rows.append(row)
    return rows


def showing(node):
    states = node.get_state_set()
    return states.contains(Atspi.StateType.SHOWING)


def page_contents(window):
    """The tables (with their rows) and the other named, shown texts of what is on screen."""
    tables, texts = [], []
    for node in walk(window):
        role = safely(node.get_role_name)
        if not safely(lambda: showing(node), False):
            continue
        if role in ("table", "tree table", "tree"):
            rows = safely(lambda: table_rows(node))
            if rows is not None:
                tables.append({"role": role, "name": safely(node.get_name), "rows": rows})
        elif role in ("label", "page tab", "frame"):
            name = safely(node.get_name)
            if name:
                texts.append(f"{role}: {name}")
    return {"tables": tables, "texts": texts}


def switch_to(window, name, seconds=60):
    """Presses the shown page tab named name; what went wrong, or None."""
    deadline = time.monotonic() + seconds
    while True:
        # Hidden tab widgets (in other pages and dialogs) have tabs too: only shown ones count.
        tabs = [n for n in walk(window)
                if safely(n.get_role_name) == "page tab" and safely(lambda: showing(n), False)
                and safely(n.get_name) == name]
        if len(tabs) == 1 and safely(lambda: Atspi.Action.get_n_actions(tabs[0]), 0) >= 1:
            # Qt's tab offers one action, which selects it.
            if safely(lambda: Atspi.Action.do_action(tabs[0], 0), False):
                return None
        if time.monotonic() > deadline:
            return f"{len(tabs)} shown page tabs named {name!r}, none could be pressed"
        time.sleep(1)


def wait_for_rows(window, seconds):
    """The page's contents once its first table has rows and stops changing, or at the deadline."""
    deadline = time.monotonic() + seconds
    previous = None
    while True:
        contents = page_contents(window)
        filled = any(t["rows"] for t in contents["tables"])
        if (filled and contents == previous) or time.monotonic() > deadline:
            return contents
        previous = contents
        time.sleep(2)


def main():
    out, shot_prefix, title, pages = sys.argv[1], sys.argv[2], sys.argv[3], sys.argv[4:]
    app_name, window = find_window(title, 120)
    report = {"application": app_name, "window": window.get_name() if window else None, "pages": {}}
    if window is not None:
        for position, page in enumerate(pages):
            problem = switch_to(window, page)
            contents = wait_for_rows(window, 120)
            contents["problem"] = problem
            report["pages"][page] = contents
            shot = f"{shot_prefix}{position}.xwd"
            with open(shot, "wb") as f:
                subprocess.run(["xwd", "-root", "-silent"], stdout=f, check=False)
    with open(out, "w", encoding="utf-8") as f:
        json.dump(report, f, indent=1, ensure_ascii=False)
        f.write("\n")
    return 0 if window is not None else 1


if __name__ == "__main__":
    sys.exit(main())
