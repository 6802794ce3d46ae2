#!/usr/bin/env bash
# Korvane's disk helper on a real kernel. Boots Debian's generic kernel under QEMU on a Debian 12
# root file system made with mmdebstrap (the system bus and polkit do not fit an initramfs), with
# one emulated ATA disk behind the PIIX IDE controller. The Korvane package is installed in it.
# Two boots of the same root file system:
#
# helper: a script is the first process, and a polkit rule stands for the active session of the
#   user "kvuser":
#   - kvuser runs korvanectl info --json, which reads the disk through the helper, and smartctl
#     (as root) reads the same disk; tests/device/qemu/compare_helper_report.py compares them;
#   - kvuser sends the helper what it must refuse: WRITE SECTORS and SECURITY ERASE UNIT straight
#     to its D-Bus method, a sector read past the end of the disk, a device it did not list; and
#     "kvother", whom no rule allows, asks for the disks;
#   - kvuser scans the whole disk with korvanectl scan, piece by piece through the helper;
# desktop: systemd boots without the rule, and getty logs kvuser in on tty1, so logind gives
#   kvuser an active local session and polkit's own defaults decide. In that session an X server
#   runs and Korvane is started from its menu entry (tests/device/qemu/desktop_session.sh); its
#   window is read through AT-SPI and photographed on the Disk Info and SMART Info pages, while
#   root records the helper's traffic on the system bus and starts the packaged korvane-monitor
#   unit (desktop_report.sh); tests/device/qemu/compare_desktop_report.py checks it all. The
#   screenshots are left in the work folder as desktop-page0.png and desktop-page1.png.
# After each boot the disk image's checksum must be what it was before.
#
#   scripts/qemu-helper-test.sh [--deb PATH] [--work DIR] [--only helper|desktop] [--keep] [--if-asked]
#
# --deb PATH   the package to install (default: what scripts/package.sh builds)
# --only BOOT  run one of the two boots
# --if-asked   skip unless KORVANE_QEMU_HELPER=1 (ctest's way: the first run builds the package
#              and a root file system, which takes a while)
# --work DIR   where the kernel, the root file system and the logs go (default:
#              $TMPDIR/korvane-qemu-helper); the kernel and the Debian packages are fetched once.
# Env:  KORVANE_QEMU_TIMEOUT  seconds for each boot (default 600).
#       KORVANE_QEMU_ACCEL    QEMU's accelerator (default tcg; kvm where the host's KVM works).
# Exit: 0 all checks passed; 1 a check failed; 77 skipped: in CI (CI=true: it downloads the
#       packages of a root file system of about 560 MB), not root, or no QEMU.
set -euo pipefail

KORVANE_ROOT=$(cd "$(dirname "$0")/.." && pwd)
QEMU_TESTS="$KORVANE_ROOT/tests/device/qemu"
SKIP=77

deb=""
work="${TMPDIR:-/tmp}/korvane-qemu-helper"
keep=0
only=""
if_asked=0
while [ $# -gt 0 ]; do
    case "$1" in
        --deb) deb=$2; shift ;;
        --work) work=$2; shift ;;
        --only) only=$2; shift ;;
        --keep) keep=1 ;;
        --if-asked) [ "${KORVANE_QEMU_HELPER:-}" = 1 ] || if_asked=1 ;;
        -h|--help) sed -n '2,34p' "$0"; exit 0 ;;
        *) echo "qemu-helper-test: unknown argument: $1" >&2; exit 2 ;;
    esac
    shift
done
case "$only" in ""|helper|desktop) ;; *) echo "qemu-helper-test: --only takes helper or desktop" >&2; exit 2 ;; esac

say() { printf 'qemu-helper-test: %s\n' "$*"; }
skip() { say "SKIPPED: $*"; exit $SKIP; }
is_root() { [ "$(id -u)" -eq 0 ]; }
. "$KORVANE_ROOT/scripts/lib/qemu.sh"

[ $if_asked -eq 1 ] && skip "set KORVANE_QEMU_HELPER=1 to run it (the first run builds the package and a root file system)"
[ "${CI:-}" = true ] && skip "it downloads a Debian root file system; run it by hand (ctest -L qemu)"
is_root || skip "building the root file system needs root"
export PATH="$PATH:/usr/sbin:/sbin"
declare -A tool_package=([qemu-system-x86_64]=qemu-system-x86 [busybox]=busybox-static [cpio]=cpio
                         [mmdebstrap]=mmdebstrap [mke2fs]=e2fsprogs [debugfs]=e2fsprogs [python3]=python3
                         [/usr/bin/convert]=imagemagick)
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

# Boot $1 ("helper" or "desktop") of the root file system, with $2 added to the kernel's command
# line; the VM's console goes to console-$1.txt and its report to report-$1.txt.
boot_vm() {
    local name=$1 append=$2 rc=0
    rm -f "$work/report-$name.txt"
    timeout "${KORVANE_QEMU_TIMEOUT:-600}" qemu-system-x86_64 $accel -M pc -m 1024 -smp 1 \
        -nodefaults -no-user-config -display none -no-reboot \
        -kernel "$vmlinuz" -initrd "$work/initramfs-helper.cpio" \
        -append "console=ttyS0 panic=-1 quiet $append" \
        -serial "file:$work/console-$name.txt" -serial "file:$work/report-$name.txt" \
        -drive "file=$disk,if=none,id=d0,format=raw" \
        -device "ide-hd,drive=d0,bus=ide.0,unit=0,model=$model,serial=$serial,ver=$firmware" \
        -drive "file=$rootimg,if=virtio,format=raw" \
        </dev/null >"$work/qemu-$name.txt" 2>&1 || rc=$?
    [ $rc -eq 0 ] && return 0
    say "the $name VM failed (exit $rc); see $work/qemu-$name.txt and $work/console-$name.txt"
    tail -n 20 "$work/qemu-$name.txt" "$work/console-$name.txt" 2>/dev/null || true
    return 1
}

# Makes the root file system at $1 ready for the desktop boot: getty logs kvuser in on tty1
# (logind's seat0, whose session polkit counts as active and local), kvuser's login starts
# desktop_session.sh there, and desktop_report.sh runs as a system service once the system is up.
add_desktop_session() {
    local sysroot=$1
    mkdir -p "$sysroot/kvdesktop" "$sysroot/etc/systemd/system/getty@tty1.service.d"
    install -m 0755 "$QEMU_TESTS"/desktop_{session.sh,window.py,report.sh} "$sysroot/kvdesktop/"
    cat > "$sysroot/etc/systemd/system/getty@tty1.service.d/autologin.conf" <<'EOF2'
[Service]
ExecStart=
ExecStart=-/sbin/agetty --autologin kvuser --noclear %I $TERM
EOF2
    cat >> "$sysroot/home/kvuser/.profile" <<'EOF2'
[ "$(tty)" = /dev/tty1 ] && [ ! -e "$HOME/out" ] && exec /kvdesktop/desktop_session.sh
EOF2
    cat > "$sysroot/etc/systemd/system/kvdesktop-report.service" <<'EOF2'
[Unit]
Description=Korvane desktop test: the root side
After=multi-user.target dbus.service polkit.service

[Service]
Type=simple
ExecStart=/kvdesktop/desktop_report.sh

[Install]
WantedBy=multi-user.target
EOF2
    # The root file system has no udev, so the console's serial getty would wait for a device
    # unit that never comes; the second port is the report's anyway.
    ln -sf /dev/null "$sysroot/etc/systemd/system/serial-getty@ttyS0.service"
    mkdir -p "$sysroot/etc/systemd/system/multi-user.target.wants"
    ln -sf /etc/systemd/system/kvdesktop-report.service "$sysroot/etc/systemd/system/multi-user.target.wants/"
}

# ---- root file system: Debian 12 with the bus, polkit, smartctl and Korvane's libraries, and for
# the desktop boot systemd, an X server, xwd, the accessibility bus and its Python binding --------
packages=dbus,polkitd,smartmontools,libqt6core6,libqt6dbus6,libqt6network6,libqt6gui6,libqt6widgets6,libblkid1,kmod,util-linux,passwd,libcap2-bin,hicolor-icon-theme,desktop-file-utils,man-db
packages+=,systemd,libpam-systemd,dbus-user-session,xvfb,x11-apps,qt6-qpa-plugins,fonts-dejavu-core,at-spi2-core,python3-pyatspi,libglib2.0-bin,procps
# Named by its package list, so that a changed list makes a new one.
rootfs_tar="$work/rootfs-$(printf '%s' "$packages" | md5sum | cut -c1-12).tar"
if [ ! -s "$rootfs_tar" ]; then
    say "making a Debian 12 root file system with mmdebstrap (once)"
    rm -f "$work"/rootfs*.tar # made for another package list
    mmdebstrap --variant=minbase --mode=root --format=tar --include="$packages" \
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
# Stands for kvuser's active local session in the helper boot, which has no login manager to
# make one. helper_checks.sh lays this copy of polkit's rules folder over the real one, which
# the desktop boot finds as the package left it.
cp -a "$sysroot/etc/polkit-1/rules.d" "$sysroot/kvtest-rules.d"
cat > "$sysroot/kvtest-rules.d/50-kvtest.rules" <<'EOF2'
polkit.addRule(function(action, subject) {
    if ((action.id == "org.korvane.read-smart" || action.id == "org.korvane.scan") && subject.user == "kvuser")
        return polkit.Result.YES;
});
EOF2
chmod 0644 "$sysroot/kvtest-rules.d/50-kvtest.rules"
install -m 0755 "$QEMU_TESTS/helper_checks.sh" "$sysroot/kvtest.sh"
add_desktop_session "$sysroot"
rootimg="$work/rootfs.img"
rm -f "$rootimg"
mke2fs -q -F -t ext4 -d "$sysroot" "$rootimg" 2048M
[ $keep -eq 1 ] || rm -rf "$sysroot"

# ---- initramfs: just enough to mount the root file system and hand over to the first process
# the kernel's command line names (kvinit=), the helper boot's script by default ----------------
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
exec switch_root /newroot "${kvinit:-/kvtest.sh}"
EOF2
chmod +x "$root/init"
(cd "$root" && find . | cpio -o -H newc --quiet) > "$work/initramfs-helper.cpio"
[ $keep -eq 1 ] || rm -rf "$root"

# ---- the disk: 64 MiB of a pattern, so that a write anywhere changes its checksum ---------------
disk="$work/disk.img"
python3 -c "import sys; sys.stdout.buffer.write(bytes(range(256)) * (64 * 1024 * 1024 // 256))" > "$disk"
before=$(sha256sum "$disk" | cut -d' ' -f1)

model="KORVANE HELPER TEST DISK 0123456789"; serial="KVHELPER0123456789AB"; firmware="KVFW2.00"
identity=(--model "$model" --serial "$serial" --firmware "$firmware" --capacity $((64 * 1024 * 1024)) --before "$before")
# TCG by default: KVM under this kind of nested host starts a machine that never boots.
accel="-accel ${KORVANE_QEMU_ACCEL:-tcg}"
say "kernel $kver; $accel (work dir $work)"
status=0
t0=$(date +%s)
if [ "$only" != desktop ]; then
    boot_vm helper "" || exit 1
    python3 "$QEMU_TESTS/compare_helper_report.py" --report "$work/report-helper.txt" "${identity[@]}" \
        --after "$(sha256sum "$disk" | cut -d' ' -f1)" || status=1
    say "helper boot: $(($(date +%s) - t0)) s"
fi
if [ "$only" != helper ]; then
    t1=$(date +%s)
    : >"$work/debugfs.log"
    boot_vm desktop "kvinit=/lib/systemd/systemd systemd.show_status=1" || exit 1
    for page in 0 1; do
        rm -f "$work/desktop-page$page.xwd" "$work/desktop-page$page.png"
        debugfs -R "dump /home/kvuser/out/page$page.xwd $work/desktop-page$page.xwd" "$rootimg" >>"$work/debugfs.log" 2>&1
        /usr/bin/convert "xwd:$work/desktop-page$page.xwd" "$work/desktop-page$page.png" 2>>"$work/debugfs.log" || true
    done
    python3 "$QEMU_TESTS/compare_desktop_report.py" --report "$work/report-desktop.txt" "${identity[@]}" \
        --after "$(sha256sum "$disk" | cut -d' ' -f1)" --screenshots "$work/desktop-page0.png" "$work/desktop-page1.png" \
        || status=1
    say "desktop boot: $(($(date +%s) - t1)) s"
fi
[ $keep -eq 1 ] || rm -f "$rootimg" "$disk"
say "done in $(($(date +%s) - t0)) s"
exit $status
