#!/usr/bin/env bash
# Draws Korvane's window on the demo disks into PNG files: every page, the
# about and registration boxes, the disk and attribute settings forms, the
# exports' message boxes, a surface scan (its map, result and a block's
# details), the statistics page over a generated history (a day, a month, a
# year) and its graph settings form in English, German and Russian, and the
# "Looking for devices ..." panel. The English main window becomes the README's
# picture, its scan page the manual's.
#   scripts/screenshots.sh [OUTPUT-FOLDER]     default build/screenshots
set -euo pipefail
KORVANE_ROOT=$(cd "$(dirname "$0")/.." && pwd)
. "$KORVANE_ROOT/scripts/lib/common.sh"

build_dir="$KORVANE_ROOT/build"
out=${1:-"$build_dir/screenshots"}
start_log "$build_dir"
ensure_packages "${KORVANE_BUILD_PACKAGES[@]}" xvfb xauth
build_tree "$build_dir"

export KORVANE_SIMULATE="$KORVANE_ROOT/resources/demo"
say "drawing the window into $out"
# A real X server gives the same fonts and style a desktop does.
xvfb-run -a -s "-screen 0 1280x800x24" "$build_dir/src/app/screenshots/korvane-screenshots" "$out" >>"$KORVANE_LOG" 2>&1 \
    || die "drawing failed; see $KORVANE_LOG"
mkdir -p "$KORVANE_ROOT/docs/images"
cp "$out/main-en-1.png" "$KORVANE_ROOT/docs/images/main-window.png"
cp "$out/scan-latency-en.png" "$KORVANE_ROOT/docs/images/scan-disk.png"
say "wrote $(ls "$out" | wc -l) pictures; docs/images/main-window.png is the SMART Info page, scan-disk.png the Scan Disk page"
