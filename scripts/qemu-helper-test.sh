#!/usr/bin/env bash
# Korvane's disk helper on a real kernel. Boots Debian's generic kernel under QEMU on a Debian 12
# root file system made with mmdebstrap (the system bus and polkit do not fit an initramfs), with
# one emulated ATA disk behind the PIIX IDE controller. The Korvane package is installed in it,
# and a polkit rule stands for the active session of the user "kvuser". Inside the VM:
#   - kvuser runs korvanectl info --json, which reads the disk through the helper, and smartctl
#     (as root) reads the same disk; tests/device/qemu/compare_helper_report.py compares them;
#   - kvuser sends the helper what it must refuse: WRITE SECTORS and SECURITY ERASE UNIT straight
#     to its D-Bus method, a sector read past the end of the disk, a device it did not list; and
#     "kvother", whom no rule allows, asks for the disks;
#   - the disk image's checksum is the same before and after.
#
#   scripts/qemu-helper-test.sh [--deb PATH] [--work DIR] [--keep] [--if-asked]
#
# --deb PATH   the package to install (default: what scripts/package.sh builds)
# --if-asked   skip unless KORVANE_QEMU_HELPER=1 (ctest's way: the first run builds the package
#              and a root file system, which takes a while)
# --work DIR   where the kernel, the root file system and the logs go (default:
#              $TMPDIR/korvane-qemu-helper); the kernel and the Debian packages are fetched once.
# Env:  KORVANE_QEMU_TIMEOUT  seconds for the VM (default 600).
# Exit: 0 all checks passed; 1 a check failed; 77 skipped: in CI (CI=true: it downloads a root
#       file system of about 150 MB), not root, or no QEMU.
set -euo pipefail

KORVANE_ROOT=$(cd "$(dirname "$0")/.." && pwd)
COMPARE="$KORVANE_ROOT/tests/device/qemu/compare_helper_report.py"
SKIP=77

deb=""
work="${TMPDIR:-/tmp}/korvane-qemu-helper"
keep=0
if_asked=0
while [ $# -gt 0 ]; do
    case "$1" in
        --deb) deb=$2; shift ;;
        --work) work=$2; shift ;;
        --keep) keep=1 ;;
        --if-asked) [ "${KORVANE_QEMU_HELPER:-}" = 1 ] || if_asked=1 ;;
        -h|--help) sed -n '2,22p' "$0"; exit 0 ;;
        *) echo "qemu-helper-test: unknown argument: $1" >&2; exit 2 ;;
    esac
    shift
done

say() { printf 'qemu-helper-test: %s\n' "$*"; }
skip() { say "SKIPPED: $*"; exit $SKIP; }
is_root() { [ "$(id -u)" -eq 0 ]; }
. "$KORVANE_ROOT/scripts/lib/qemu.sh"

[ $if_asked -eq 1 ] && skip "set KORVANE_QEMU_HELPER=1 to run it (the first run builds the package and a root file system)"
[ "${CI:-}" = true ] && skip "it downloads a Debian root file system; run it by hand (ctest -L qemu)"
is_root || skip "building the root file system needs root"
export PATH="$PATH:/usr/sbin:/sbin"
declare -A tool_package=([qemu-system-x86_64]=qemu-system-x86 [busybox]=busybox-static [cpio]=cpio
                         [mmdebstrap]=mmdebstrap [mke2fs]=e2fsprogs [python3]=python3)
missing=()
for tool in "${!tool_package[@]}"; do command -v "$tool" >/dev/null 2>&1 || missing+=("${tool_package[$tool]}"); done
if [ ${#missing[@]} -gt 0 ]; then
    say "installing ${missing[*]}"
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null 2>&1 \
        || skip "could not install ${missing[*]}"
fi
qemu-system-x86_64 --version >/dev/null 2>&1 || skip "qemu-system-x86_64 does not run on this host"

mkdir -p "$work"
work=$(cd "$work" && pwd)
if [ -z "$deb" ]; then
    say "building the package (scripts/package.sh)"
    deb=$("$KORVANE_ROOT/scripts/package.sh" | tail -1)
fi
[ -r "$deb" ] || { say "no package at $deb"; exit 1; }

qemu_fetch_kernel

# ---- root file system: Debian 12 with the bus, polkit, smartctl and Korvane's libraries ---------
rootfs_tar="$work/rootfs.tar"
if [ ! -s "$rootfs_tar" ]; then
    say "making a Debian 12 root file system with mmdebstrap (once)"
    mmdebstrap --variant=minbase --mode=root --format=tar \
        --include=dbus,polkitd,smartmontools,libqt6core6,libqt6dbus6,libqt6network6,libqt6gui6,libqt6widgets6,libblkid1,kmod,util-linux,passwd,libcap2-bin,hicolor-icon-theme,desktop-file-utils,man-db \
        bookworm "$rootfs_tar.part" >"$work/mmdebstrap.log" 2>&1 || { tail -20 "$work/mmdebstrap.log"; exit 1; }
    mv "$rootfs_tar.part" "$rootfs_tar"
fi
sysroot="$work/sysroot"
rm -rf "$sysroot" && mkdir -p "$sysroot"
tar -xpf "$rootfs_tar" -C "$sysroot"
cp "$deb" "$sysroot/tmp/korvane.deb"
chroot "$sysroot" dpkg -i /tmp/korvane.deb >"$work/dpkg.log" 2>&1 || { tail -20 "$work/dpkg.log"; exit 1; }
rm "$sysroot/tmp/korvane.deb"
chroot "$sysroot" useradd -m -s /bin/sh kvuser
chroot "$sysroot" useradd -m -s /bin/sh kvother
# Stands for kvuser's active local session, which the VM has no login manager to make.
cat > "$sysroot/etc/polkit-1/rules.d/50-kvtest.rules" <<'EOF2'
polkit.addRule(function(action, subject) {
    if ((action.id == "org.korvane.read-smart" || action.id == "org.korvane.scan") && subject.user == "kvuser")
        return polkit.Result.YES;
});
EOF2
chmod 0644 "$sysroot/etc/polkit-1/rules.d/50-kvtest.rules"
cp "$KORVANE_ROOT/tests/device/qemu/helper_checks.sh" "$sysroot/kvtest.sh"
chmod +x "$sysroot/kvtest.sh"
rootimg="$work/rootfs.img"
rm -f "$rootimg"
mke2fs -q -F -t ext4 -d "$sysroot" "$rootimg" 1536M
[ $keep -eq 1 ] || rm -rf "$sysroot"

# ---- initramfs: just enough to mount the root file system and hand over -------------------------
root="$work/initramfs"
rm -rf "$root" && mkdir -p "$root"/{bin,dev,proc,sys,newroot,mods}
cp "$(command -v busybox)" "$root/bin/busybox"
: > "$root/mods/order"
for m in ata_piix sd_mod virtio_pci virtio_blk ext4 crc32c_generic; do qemu_add_module "$m"; done
cat > "$root/init" <<'EOF2'
#!/bin/busybox sh
/bin/busybox --install -s /bin
mount -t proc proc /proc
mount -t devtmpfs devtmpfs /dev
for m in $(cat /mods/order); do insmod /mods/$m 2>/dev/null; done
i=0
while { [ ! -b /dev/vda ] || [ ! -b /dev/sda ]; } && [ $i -lt 600 ]; do sleep 0.1; i=$((i + 1)); done
mount -t ext4 /dev/vda /newroot || { echo "cannot mount the root file system"; poweroff -f; }
umount /dev /proc
exec switch_root /newroot /kvtest.sh
EOF2
chmod +x "$root/init"
(cd "$root" && find . | cpio -o -H newc --quiet) > "$work/initramfs-helper.cpio"
[ $keep -eq 1 ] || rm -rf "$root"

# ---- the disk: 64 MiB of a pattern, so that a write anywhere changes its checksum ---------------
disk="$work/disk.img"
python3 -c "import sys; sys.stdout.buffer.write(bytes(range(256)) * (64 * 1024 * 1024 // 256))" > "$disk"
before=$(sha256sum "$disk" | cut -d' ' -f1)

model="KORVANE HELPER TEST DISK 0123456789"; serial="KVHELPER0123456789AB"; firmware="KVFW2.00"
say "kernel $kver; booting (work dir $work)"
t0=$(date +%s)
rm -f "$work/report-helper.txt"
rc=0
timeout "${KORVANE_QEMU_TIMEOUT:-600}" qemu-system-x86_64 -accel tcg -M pc -m 1024 -smp 1 \
    -nodefaults -no-user-config -display none -no-reboot \
    -kernel "$vmlinuz" -initrd "$work/initramfs-helper.cpio" \
    -append "console=ttyS0 panic=-1 quiet" \
    -serial "file:$work/console-helper.txt" -serial "file:$work/report-helper.txt" \
    -drive "file=$disk,if=none,id=d0,format=raw" \
    -device "ide-hd,drive=d0,bus=ide.0,unit=0,model=$model,serial=$serial,ver=$firmware" \
    -drive "file=$rootimg,if=virtio,format=raw" \
    </dev/null >"$work/qemu-helper.txt" 2>&1 || rc=$?
after=$(sha256sum "$disk" | cut -d' ' -f1)
if [ $rc -ne 0 ]; then
    say "the VM failed (exit $rc); see $work/qemu-helper.txt and $work/console-helper.txt"
    tail -n 20 "$work/qemu-helper.txt" "$work/console-helper.txt" 2>/dev/null || true
    exit 1
fi
status=0
python3 "$COMPARE" --report "$work/report-helper.txt" --model "$model" --serial "$serial" \
    --firmware "$firmware" --capacity $((64 * 1024 * 1024)) --before "$before" --after "$after" || status=1
[ $keep -eq 1 ] || rm -f "$rootimg" "$disk"
say "done in $(($(date +%s) - t0)) s"
exit $status
