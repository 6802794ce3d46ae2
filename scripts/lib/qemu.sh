# Shared by the QEMU tests: Debian's generic kernel, fetched once into the work folder, and its
# modules copied into an initramfs. Source it after defining work (the work folder), root (the
# initramfs tree), and the functions say, skip and is_root.

# Sets kernel_dir, vmlinuz, kver and moddir, fetching the kernel package on the first run.
qemu_fetch_kernel() {
    kernel_dir="$work/kernel"
    if ! ls "$kernel_dir"/boot/vmlinuz-* >/dev/null 2>&1; then
        kpkg=$(apt-cache depends linux-image-amd64 2>/dev/null | awk '/Depends: linux-image-[0-9]/{print $2; exit}' || true)
        if [ -z "$kpkg" ] && is_root; then
            apt-get update -qq >/dev/null 2>&1 || true
            kpkg=$(apt-cache depends linux-image-amd64 2>/dev/null | awk '/Depends: linux-image-[0-9]/{print $2; exit}' || true)
        fi
        [ -n "$kpkg" ] || skip "apt does not know linux-image-amd64 (run apt-get update as root)"
        say "fetching $kpkg"
        rm -rf "$work/deb" "$kernel_dir" && mkdir -p "$work/deb"
        (cd "$work/deb" && apt-get download "$kpkg" >/dev/null 2>&1) || skip "could not download $kpkg"
        dpkg-deb -x "$work"/deb/"$kpkg"_*.deb "$kernel_dir"
        rm -rf "$work/deb"
    fi
    vmlinuz=$(ls "$kernel_dir"/boot/vmlinuz-* | head -1)
    kver=${vmlinuz##*/vmlinuz-}
    [ -r "$vmlinuz" ] || skip "cannot read $vmlinuz (run once as root)"
    moddir="$kernel_dir/lib/modules/$kver"
}

# Copies module $1 and, first, the modules it depends on into $root/mods, appending each to
# $root/mods/order, the order to load them in. The package has no modules.dep: each module's
# "depends=" line gives the order.
declare -A qemu_modules_seen=()
qemu_add_module() {
    local name=$1 file dep
    [ -n "${qemu_modules_seen[$name]:-}" ] && return 0
    qemu_modules_seen[$name]=1
    file=$(find "$moddir" -name "$(echo "$name" | sed 's/[-_]/[-_]/g').ko*" | head -1)
    [ -n "$file" ] || return 0 # built into the kernel
    case $file in
        *.xz) xz -dc "$file" ;;
        *.zst) zstd -qdc "$file" ;;
        *) cat "$file" ;;
    esac > "$root/mods/$name.ko"
    for dep in $(tr '\0' '\n' < "$root/mods/$name.ko" | sed -n 's/^depends=//p' | tr ',' ' '); do
        qemu_add_module "$dep"
    done
    echo "$name.ko" >> "$root/mods/order"
}
