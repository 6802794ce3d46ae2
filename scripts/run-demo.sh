#!/usr/bin/env bash
# Installs what is missing, builds Korvane and runs it on the bundled demo
# disks: the window when a display is there, else a text report.
set -euo pipefail
KORVANE_ROOT=$(cd "$(dirname "$0")/.." && pwd)
. "$KORVANE_ROOT/scripts/lib/common.sh"

build_dir="$KORVANE_ROOT/build"
ensure_packages "${KORVANE_BUILD_PACKAGES[@]}"
say "building in $build_dir"
build_tree "$build_dir"

export KORVANE_SIMULATE="$KORVANE_ROOT/resources/demo"
# Keep the demo's settings and event log out of the build tree's way.
export KORVANE_HOME=${KORVANE_HOME:-"$build_dir/demo-home"}
mkdir -p "$KORVANE_HOME"

gui="$build_dir/src/app/korvane/Korvane"
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ -x "$gui" ]; then
    say "starting Korvane on the demo disks"
    exec "$gui" "$@"
fi
say "no display: the demo disks as korvanectl sees them"
exec "$build_dir/src/app/korvanectl/korvanectl" info "$@"
