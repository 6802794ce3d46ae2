#!/usr/bin/env bash
# Installs what is missing, builds Korvane and runs it on the bundled demo
# disks: the window when a display is there, else a text report. What the
# tools print goes to build/setup.log, shown when a step fails.
set -euo pipefail
KORVANE_ROOT=$(cd "$(dirname "$0")/.." && pwd)
. "$KORVANE_ROOT/scripts/lib/common.sh"

build_dir="$KORVANE_ROOT/build"
start_log "$build_dir"
ensure_packages "${KORVANE_BUILD_PACKAGES[@]}"
build_tree "$build_dir"

export KORVANE_SIMULATE="$KORVANE_ROOT/resources/demo"
# Keep the demo's settings and event log out of the build tree's way.
export KORVANE_HOME=${KORVANE_HOME:-"$build_dir/demo-home"}
mkdir -p "$KORVANE_HOME"

gui="$build_dir/src/app/korvane/Korvane"
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ -x "$gui" ]; then
    say "running Korvane on the demo disks"
    exec "$gui" "$@"
fi
say "running korvanectl info on the demo disks (no display)"
exec "$build_dir/src/app/korvanectl/korvanectl" info "$@"
