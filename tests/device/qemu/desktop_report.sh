#!/bin/sh
# The root side of the desktop VM that scripts/qemu-helper-test.sh boots with systemd, run as a
# system service once the system is up. It records the helper's traffic on the system bus while
# kvuser's session (desktop_session.sh) starts Korvane, starts the packaged korvane-monitor
# unit, and when the session is done writes what logind, the bus, the journal and the session
# saw to the second serial port in "=== name" sections, then powers the VM off.
export PATH=/usr/sbin:/usr/bin:/sbin:/bin
mkdir -p /run/kvdesktop
# polkit's answers to the helper too: they say who was allowed what, and on what grounds.
dbus-monitor --system "destination='org.korvane.Helper1'" "sender='org.korvane.Helper1'" \
    "destination='org.freedesktop.PolicyKit1'" "sender='org.freedesktop.PolicyKit1'" \
    >/run/kvdesktop/bus.txt 2>&1 &
monitor_pid=$!
sleep 2
touch /run/kvdesktop/ready
systemctl start korvane-monitor.service

out=/home/kvuser/out
i=0
while [ ! -e "$out/done" ] && [ $i -lt 400 ]; do sleep 1; i=$((i + 1)); done
sleep 5 # a poll of the monitor after the window's reads

section() { echo "=== $1"; }
korvane_pid=$(pgrep -x -u kvuser Korvane | head -1)
{
    section sessions
    for s in $(loginctl list-sessions --no-legend | awk '{print $1}'); do
        loginctl show-session "$s" -p Id -p Name -p Seat -p TTY -p VTNr -p Type -p Class -p Active -p Remote -p State -p Service
        echo
    done
    section korvane-process
    echo "pid=$korvane_pid"
    [ -n "$korvane_pid" ] && ps -o user=,lsession=,unit=,args= -p "$korvane_pid"
    [ -n "$korvane_pid" ] && cat "/proc/$korvane_pid/cgroup"
    section helper-callers
    for name in $(sed -n 's/.*sender=\(:[0-9.]*\) -> destination=org.korvane.Helper1.*/\1/p' /run/kvdesktop/bus.txt | sort -u); do
        pid=$(busctl --system call org.freedesktop.DBus /org/freedesktop/DBus org.freedesktop.DBus \
              GetConnectionUnixProcessID s "$name" 2>/dev/null | awk '{print $2}')
        echo "$name pid=$pid comm=$(cat "/proc/$pid/comm" 2>/dev/null)"
    done
    section polkit-rules
    grep -rl -i -e korvane -e kvuser /etc/polkit-1/rules.d /usr/share/polkit-1/rules.d 2>/dev/null
    section activation
    journalctl -b --no-pager -o cat -u dbus.service | grep -i 'korvane'
    kill "$monitor_pid"
    sleep 1
    section bus
    cat /run/kvdesktop/bus.txt
    section window
    cat "$out/window.json"; echo
    section session-log
    cat "$out/session.log"; echo
    section smartctl
    smartctl --json -i -A -H /dev/sda
    section monitor-unit
    systemctl show korvane-monitor.service -p ActiveState -p SubState -p MainPID -p NRestarts -p User
    section monitor-journal
    journalctl -b --no-pager -o cat -u korvane-monitor.service
    section monitor-event-log
    cat /var/lib/korvane/KV_f.log
    section end
} >/dev/ttyS1 2>&1
sync
systemctl poweroff
