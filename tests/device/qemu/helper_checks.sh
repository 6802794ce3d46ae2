#!/bin/sh
# Runs as the first process of the VM that scripts/qemu-helper-test.sh boots: starts the system
# bus, lets an ordinary user read the disk through Korvane's helper and ask it for what it must
# refuse, and writes every answer to the second serial port in "=== name" sections.
export PATH=/usr/sbin:/usr/bin:/sbin:/bin
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
mount -t tmpfs tmpfs /run
mount -t tmpfs tmpfs /tmp
# The rules folder with the rule that stands for kvuser's session, for this boot only: the
# desktop boot must find the folder as the package left it.
mount --bind /kvtest-rules.d /etc/polkit-1/rules.d
mkdir -p /run/dbus
dbus-daemon --system --fork

# dbus-send as one user: the helper's method with the arguments given.
helper() {
    user=$1; method=$2; shift 2
    setpriv --reuid="$user" --regid="$user" --init-groups --reset-env \
        dbus-send --system --print-reply --reply-timeout=120000 --dest=org.korvane.Helper1 \
        /org/korvane/Helper1 "org.korvane.Helper1.$method" "$@" 2>&1
    echo "exit $?"
}
# "/dev/sda" and "/dev/sda1" as D-Bus byte arrays.
sda=array:byte:47,100,101,118,47,115,100,97
sda1=array:byte:47,100,101,118,47,115,100,97,49

{
    echo "=== korvanectl"
    setpriv --reuid=kvuser --regid=kvuser --init-groups --reset-env korvanectl info --json 2>/tmp/korvanectl.err
    echo "=== korvanectl-exit"
    echo $?
    echo "=== korvanectl-stderr"
    cat /tmp/korvanectl.err
    echo "=== smartctl"
    smartctl --json -i -A -H /dev/sda
    echo "=== identify"
    helper kvuser AtaCommand "$sda" int32:0 array:byte:0,1,0,0,0,0,236,0
    echo "=== write-sectors"
    helper kvuser AtaCommand "$sda" int32:0 array:byte:0,1,0,0,0,224,48,0
    echo "=== security-erase"
    helper kvuser AtaCommand "$sda" int32:0 array:byte:0,0,0,0,0,160,244,0
    echo "=== read-inside"
    helper kvuser ReadSectors "$sda" uint64:512 uint32:512
    echo "=== read-outside"
    helper kvuser ReadSectors "$sda" uint64:67108864 uint32:512
    echo "=== unlisted"
    helper kvuser AtaCommand "$sda1" int32:0 array:byte:0,1,0,0,0,0,236,0
    echo "=== unauthorised"
    helper kvother ListDisks
    echo "=== unauthorised-command"
    helper kvother AtaCommand "$sda" int32:0 array:byte:0,1,0,0,0,0,236,0
    # The whole surface through the helper, in the pieces the scan reads.
    echo "=== scan"
    setpriv --reuid=kvuser --regid=kvuser --init-groups --reset-env korvanectl scan 0 --json 2>&1
    echo "=== scan-exit"
    echo $?
    echo "=== capabilities"
    getcap -r /usr/bin /usr/libexec 2>/dev/null
    find /usr/bin/korvanectl /usr/bin/Korvane /usr/libexec/korvane-helper -perm /6000
    echo "=== end"
} > /dev/ttyS1 2>&1
sync
echo o > /proc/sysrq-trigger
sleep 10
