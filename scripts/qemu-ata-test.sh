#!/usr/bin/env bash
# Runs korvanectl against a real Linux kernel and a real ATA stack. Boots Debian's generic
# amd64 kernel under qemu-system-x86_64 (software emulation, no KVM needed) with one emulated
# ATA disk whose model, serial and firmware this script chooses, once behind the PIIX IDE
# controller and once behind AHCI. Inside each VM korvanectl and smartctl read the same disk;
# tests/device/qemu/compare_vm_report.py then checks the two reports against each other and
# against what the VM was given: identity, capacity, SMART support, every attribute, and the
# ext2 volume on the disk (label, serial, mount point, space). Last, korvanectl scan reads the
# whole disk twice, and the disk's checksum before and after proves that it wrote nothing; then
# it scans a scsi_debug disk with ten unreadable sectors, which it must find and place.
#
#   scripts/qemu-ata-test.sh --korvanectl PATH [--work DIR] [--keep] [piix] [ahci]
#
# --work DIR   where the kernel, the initramfs and the logs go (default: $TMPDIR/korvane-qemu);
#              the kernel is fetched once with apt-get download and kept there.
# Env:  KORVANE_QEMU_TIMEOUT  seconds per VM (default 120).
# Exit: 0 every VM agrees; 1 a mismatch or a VM that failed; 77 QEMU cannot run here (no QEMU
#       or no kernel, and not root to install them).
set -euo pipefail

KORVANE_ROOT=$(cd "$(dirname "$0")/.." && pwd)
COMPARE="$KORVANE_ROOT/tests/device/qemu/compare_vm_report.py"
SKIP=77

korvanectl=""
work="${TMPDIR:-/tmp}/korvane-qemu"
keep=0
machines=()
while [ $# -gt 0 ]; do
    case "$1" in
        --korvanectl) korvanectl=$2; shift ;;
        --work) work=$2; shift ;;
        --keep) keep=1 ;;
        piix|ahci) machines+=("$1") ;;
        -h|--help) sed -n '2,18p' "$0"; exit 0 ;;
        *) echo "qemu-ata-test: unknown argument: $1" >&2; exit 2 ;;
    esac
    shift
done
[ ${#machines[@]} -gt 0 ] || machines=(piix ahci)
[ -n "$korvanectl" ] && [ -x "$korvanectl" ] || { echo "qemu-ata-test: --korvanectl PATH to the built program is required" >&2; exit 2; }
korvanectl=$(cd "$(dirname "$korvanectl")" && pwd)/$(basename "$korvanectl")

say() { printf 'qemu-ata-test: %s\n' "$*"; }
. "$KORVANE_ROOT/scripts/lib/qemu.sh"
skip() { say "SKIPPED: $*"; exit $SKIP; }
is_root() { [ "$(id -u)" -eq 0 ]; }

# ---- host tools --------------------------------------------------------------------------
# Debian package of each tool the test runs on the host or copies into the VM.
declare -A tool_package=(
    [qemu-system-x86_64]=qemu-system-x86 [busybox]=busybox-static [cpio]=cpio
    [smartctl]=smartmontools [python3]=python3 [mke2fs]=e2fsprogs [setcap]=libcap2-bin
)
missing=()
for tool in "${!tool_package[@]}"; do
    PATH="$PATH:/usr/sbin:/sbin" command -v "$tool" >/dev/null 2>&1 || missing+=("${tool_package[$tool]}")
done
if [ ${#missing[@]} -gt 0 ]; then
    if is_root && command -v apt-get >/dev/null; then
        say "installing ${missing[*]}"
        DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null 2>&1 \
            || { DEBIAN_FRONTEND=noninteractive apt-get update -qq >/dev/null 2>&1 \
                 && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null; } \
            || skip "could not install ${missing[*]}"
    else
        skip "missing ${missing[*]}; install them (apt-get install ${missing[*]}) or run as root"
    fi
fi
export PATH="$PATH:/usr/sbin:/sbin"
qemu-system-x86_64 --version >/dev/null 2>&1 || skip "qemu-system-x86_64 does not run on this host"

mkdir -p "$work"
work=$(cd "$work" && pwd)

# ---- kernel: Debian's generic image (the cloud image has no AHCI driver) -------------------
qemu_fetch_kernel

# ---- initramfs ---------------------------------------------------------------------------
root="$work/root"
rm -rf "$root"
mkdir -p "$root"/{bin,sbin,dev,etc,proc,sys,tmp,mnt,mods}

# Copies a program and, when it is dynamically linked, its loader and libraries (as ldd
# resolves them on this host) to the same paths inside the image.
add_program() {
    local src=$1 dest=$2 lib
    mkdir -p "$root$(dirname "$dest")"
    cp -L "$src" "$root$dest"
    for lib in $(ldd "$src" 2>/dev/null | grep -o '/[^ ]*' || true); do
        [ -e "$root$lib" ] && continue
        mkdir -p "$root$(dirname "$lib")"
        cp -L "$lib" "$root$lib"
    done
}
add_program "$(command -v busybox)" /bin/busybox
add_program "$(command -v smartctl)" /usr/sbin/smartctl
add_program "$korvanectl" /usr/bin/korvanectl
add_program "$(command -v setcap)" /usr/sbin/setcap

# The controllers, the disk driver and ext2 (through ext4, which wants crc32c) are modules
# in Debian's kernel.
: > "$root/mods/order"
for m in ata_piix ahci sd_mod ext4 crc32c_generic; do qemu_add_module "$m"; done
# scsi_debug stands for a disk with unreadable sectors. It is loaded last, by hand, so that
# the ATA disk stays /dev/sda.
qemu_add_module scsi_debug
sed -i '/^scsi_debug\.ko$/d' "$root/mods/order"

# The mount point has a space so that the mount table's escapes (\040) are exercised.
cat > "$root/init" <<'EOF'
#!/bin/busybox sh
/bin/busybox --install -s /bin
export PATH=/bin:/sbin:/usr/bin:/usr/sbin
# A korvanectl built with the race detector checks only its own code: Qt's
# libraries are not instrumented, and their internal locking looks like races.
export TSAN_OPTIONS=ignore_noninstrumented_modules=1
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
for m in $(cat /mods/order); do insmod /mods/$m 2>/dev/null; done
i=0
while [ ! -b /dev/sda1 ] && [ $i -lt 600 ]; do sleep 0.1; i=$((i + 1)); done
# An ordinary user, to see what korvanectl tells someone who may not open the disk.
echo "nobody:x:65534:65534:nobody:/:/bin/sh" > /etc/passwd
echo "nogroup:x:65534:" > /etc/group
mkdir -p "/mnt/kv data"
mount -t ext2 /dev/sda1 "/mnt/kv data" || echo "mount of /dev/sda1 failed"
{
    echo "=== korvanectl"
    korvanectl info --json 2>/tmp/korvanectl.err
    rc=$?
    echo "=== korvanectl-exit"
    echo $rc
    echo "=== korvanectl-stderr"
    cat /tmp/korvanectl.err
    # The grant the user is advised to make: the two capabilities on the binary.
    cp /usr/bin/korvanectl /usr/bin/korvanectl-caps
    setcap cap_sys_rawio,cap_dac_override+ep /usr/bin/korvanectl-caps
    echo "=== unprivileged"
    su nobody -s /bin/sh -c "korvanectl info" 2>&1
    echo "=== capabilities"
    su nobody -s /bin/sh -c "korvanectl-caps info --json" 2>/dev/null
    # Allowed to open the disk, as members of group "disk" are, but no capability.
    chmod 0666 /dev/sda
    echo "=== writer"
    su nobody -s /bin/sh -c "korvanectl info --json" 2>/dev/null
    chmod 0600 /dev/sda
    echo "=== smartctl"
    smartctl --json -i -A -H /dev/sda
    echo "=== statfs"
    stat -f -c '%S %b %a' "/mnt/kv data"
    umount "/mnt/kv data"
    # The surface scan must never write: the disk's checksum before and after two scans, one
    # by its place in the disk list with the kernel refusing writes to the device, one by an
    # ordinary user through a device node that is readable only.
    echo "=== scan-before"
    md5sum /dev/sda
    blockdev --setro /dev/sda
    echo "=== scan"
    korvanectl scan 0 --json 2>/tmp/scan.err
    echo "=== scan-exit"
    echo $?
    echo "=== scan-stderr"
    cat /tmp/scan.err
    chmod 0444 /dev/sda
    echo "=== scan-readonly-node"
    su nobody -s /bin/sh -c "korvanectl scan /dev/sda --block-size 262144" 2>&1
    echo "=== scan-readonly-node-exit"
    su nobody -s /bin/sh -c "korvanectl scan /dev/sda --block-size 262144 >/dev/null 2>&1; echo \$?"
    chmod 0600 /dev/sda
    echo "=== scan-after"
    md5sum /dev/sda
    # Ten sectors from 4660 answer every read with a medium error. Two map blocks: errors in
    # the first are counted when the scan moves on, those in the last one never are.
    insmod /mods/scsi_debug.ko dev_size_mb=40 opts=2 medium_error_start=4660 medium_error_count=10
    i=0
    while [ ! -b /dev/sdb ] && [ $i -lt 300 ]; do sleep 0.1; i=$((i + 1)); done
    for size in 65536 512; do
        echo "=== scan-bad-$size"
        korvanectl scan /dev/sdb --block-size $size --json 2>&1
    done
    echo "=== end"
} > /dev/ttyS1 2>&1
poweroff -f
EOF
chmod +x "$root/init"
# Left uncompressed: unpacking is faster than inflating under software emulation.
(cd "$root" && find . | cpio -o -H newc --quiet) > "$work/initramfs.cpio"
[ $keep -eq 1 ] || rm -rf "$root"

# ---- the disk: 64 MiB, one MBR partition from 1 MiB holding an ext2 file system -----------
disk_bytes=$((64 * 1024 * 1024))
part_start=2048
part_sectors=$((disk_bytes / 512 - part_start))
label="KV Data"
uuid="3b9f2c1e-7d45-4a60-9e21-5c8d0f6a4b17"
image="$work/disk.img"
rm -f "$image"
truncate -s "$disk_bytes" "$image"
mke2fs -q -F -t ext2 -L "$label" -U "$uuid" -E offset=$((part_start * 512)) "$image" $((part_sectors / 2))k
le32() { printf '\\x%02x\\x%02x\\x%02x\\x%02x' $(($1 & 255)) $(($1 >> 8 & 255)) $(($1 >> 16 & 255)) $(($1 >> 24 & 255)); }
# Partition entry 1: not bootable, no CHS, type 0x83, first sector, sector count; then the signature.
printf "\\x00\\x00\\x00\\x00\\x83\\x00\\x00\\x00$(le32 $part_start)$(le32 $part_sectors)" \
    | dd of="$image" bs=1 seek=446 conv=notrunc status=none
printf '\x55\xaa' | dd of="$image" bs=1 seek=510 conv=notrunc status=none

# ---- the VMs -----------------------------------------------------------------------------
# Identity strings use the whole IDENTIFY fields where they can: a model far longer than the
# 16 characters SCSI INQUIRY carries, a serial of 20 and a firmware of 8 characters.
declare -A model=([piix]="KORVANE PIIX TEST DISK 0123456789ABCDEFG" [ahci]="KORVANE AHCI SATA TEST DISK MODEL-XYZ")
declare -A serial=([piix]="KVPIIX0123456789ABCD" [ahci]="KV-AHCI-5551212")
declare -A firmware=([piix]="KVFW1.23" [ahci]="A2B4")
timeout_s=${KORVANE_QEMU_TIMEOUT:-120}

run_vm() {
    local name=$1 controller=()
    local disk="$work/disk-$name.img"
    cp --sparse=always "$image" "$disk"
    local hd="ide-hd,drive=d0,model=${model[$name]},serial=${serial[$name]},ver=${firmware[$name]}"
    case $name in
        piix) controller=(-device "$hd,bus=ide.0,unit=0") ;;
        ahci) controller=(-device ahci,id=ahci -device "$hd,bus=ahci.0") ;;
    esac
    rm -f "$work/report-$name.txt"
    # The root file system lives in RAM and holds korvanectl twice (the copy that gets the
    # capabilities): a sanitizer build of it alone is some 60 MB.
    timeout "$timeout_s" qemu-system-x86_64 -accel tcg -M pc -m 1024 -smp 1 \
        -nodefaults -no-user-config -display none -no-reboot \
        -kernel "$vmlinuz" -initrd "$work/initramfs.cpio" \
        -append "console=ttyS0 panic=-1 quiet" \
        -serial "file:$work/console-$name.txt" -serial "file:$work/report-$name.txt" \
        -drive "file=$disk,if=none,id=d0,format=raw" "${controller[@]}" \
        </dev/null >"$work/qemu-$name.txt" 2>&1
}

say "kernel $kver; booting ${machines[*]} (work dir $work)"
t0=$(date +%s)
declare -A pid=()
for name in "${machines[@]}"; do
    run_vm "$name" &
    pid[$name]=$!
done
status=0
for name in "${machines[@]}"; do
    rc=0
    wait "${pid[$name]}" || rc=$?
    if [ $rc -ne 0 ]; then
        say "$name: the VM failed (exit $rc); see $work/qemu-$name.txt and $work/console-$name.txt"
        tail -n 20 "$work/qemu-$name.txt" "$work/console-$name.txt" 2>/dev/null || true
        status=1
        continue
    fi
    python3 "$COMPARE" --machine "$name" --report "$work/report-$name.txt" \
        --model "${model[$name]}" --serial "${serial[$name]}" --firmware "${firmware[$name]}" \
        --capacity "$disk_bytes" --label "$label" --uuid "$uuid" --mount "/mnt/kv data" || status=1
    [ $keep -eq 1 ] || rm -f "$work/disk-$name.img"
done
say "done in $(($(date +%s) - t0)) s"
exit $status
