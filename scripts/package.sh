#!/usr/bin/env bash
# Builds the Debian package of Korvane (both programs, the disk helper with its bus and polkit
# files, desktop entry, metainfo, icons, manual, man pages, the monitor's systemd unit) into
# build-package/, then checks it: lintian must report no error, and appstreamcli must accept
# the metainfo. What the tools print goes to build-package/setup.log.
#
#   scripts/package.sh        # prints the path of the .deb on its last line
set -euo pipefail
KORVANE_ROOT=$(cd "$(dirname "$0")/.." && pwd)
. "$KORVANE_ROOT/scripts/lib/common.sh"
case "${1:-}" in
    "") ;;
    -h|--help) sed -n '2,7p' "$0"; exit 0 ;;
    *) die "unknown argument: $1 (see --help)" ;;
esac

build_dir="$KORVANE_ROOT/build-package"
start_log "$build_dir"
ensure_packages "${KORVANE_BUILD_PACKAGES[@]}" dpkg-dev lintian appstream
# A release build installed under /usr, without the test suite and the benchmarks.
KORVANE_BUILD_TYPE=Release build_tree "$build_dir" -DCMAKE_INSTALL_PREFIX=/usr \
    -DKORVANE_BUILD_TESTS=OFF -DKORVANE_BUILD_BENCHMARKS=OFF

say "packing"
rm -f "$build_dir"/korvane_*.deb
logged "cpack failed" cpack --config "$build_dir/CPackConfig.cmake" -B "$build_dir"
deb=$(ls "$build_dir"/korvane_*.deb)

say "checking the metainfo"
logged "appstreamcli rejects the metainfo" \
    appstreamcli validate --no-net "$build_dir/packaging/linux/org.korvane.Korvane.metainfo.xml"

say "checking the package with lintian"
lintian_out="$build_dir/lintian.txt"
lintian --no-tag-display-limit "$deb" >"$lintian_out" 2>&1 || true
cat "$lintian_out" >>"$KORVANE_LOG"
if grep -q '^E: ' "$lintian_out"; then
    grep '^E: ' "$lintian_out" >&2
    die "lintian reports errors (all it said is in $lintian_out)"
fi
# No Korvane binary may carry file capabilities: reading disks goes through the helper.
if dpkg-deb --fsys-tarfile "$deb" | tar -tv | grep -q '^-..s\|^-.....s'; then
    die "a file in the package is setuid or setgid"
fi
say "lintian: $(grep -c '^W: ' "$lintian_out" || true) warnings, no errors (see $lintian_out)"
echo "$deb"
