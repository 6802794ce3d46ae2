#!/bin/sh
# The desktop of the user "kvuser" in the VM that scripts/qemu-helper-test.sh boots with systemd:
# started from kvuser's ~/.profile when getty logs kvuser in on tty1, so everything here runs in
# the login session logind made. It starts an X server, turns accessibility on as a screen
# reader does, starts Korvane from its menu entry, and lets desktop_window.py read the window.
# What it saw goes to ~/out, and ~/out/done tells the root side (desktop_report.sh) to collect it.
out="$HOME/out"
mkdir -p "$out"
exec >"$out/session.log" 2>&1
set -x
env | sort | grep -E '^(XDG_|DBUS_|HOME|USER|PATH)'

# The root side must be listening on the system bus before Korvane makes its first call.
i=0
while [ ! -e /run/kvdesktop/ready ] && [ $i -lt 120 ]; do sleep 1; i=$((i + 1)); done

export DISPLAY=:0
Xvfb :0 -screen 0 1280x800x24 -nolisten tcp &
i=0
while [ ! -S /tmp/.X11-unix/X0 ] && [ $i -lt 60 ]; do sleep 1; i=$((i + 1)); done
# Programs the session's bus starts (the accessibility bus among them) need the display too.
dbus-update-activation-environment --systemd DISPLAY
busctl --user set-property org.a11y.Bus /org/a11y/bus org.a11y.Status IsEnabled b true

# The menu starts an entry through GLib, which is what gio launch uses.
gio launch /usr/share/applications/korvane.desktop
echo "gio launch exit $?"
/usr/bin/python3 /kvdesktop/desktop_window.py "$out/window.json" "$out/page" Korvane "Disk Info" "SMART Info"
echo "desktop_window exit $?"
touch "$out/done"
# The session stays while the root side looks at it; the VM is powered off under it.
sleep 3600
