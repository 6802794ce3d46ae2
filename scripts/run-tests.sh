#!/usr/bin/env bash
# Installs what is missing, builds Korvane and runs the whole test suite.
#   scripts/run-tests.sh            normal build in build/
#   scripts/run-tests.sh --asan     AddressSanitizer + UBSan build in build-asan/
#   scripts/run-tests.sh --tsan     ThreadSanitizer build in build-tsan/
# Extra arguments after -- go to ctest (for example -- -R identify).
set -euo pipefail
KORVANE_ROOT=$(cd "$(dirname "$0")/.." && pwd)
. "$KORVANE_ROOT/scripts/lib/common.sh"

build_dir="$KORVANE_ROOT/build"
cmake_args=()
ctest_args=()
while [ $# -gt 0 ]; do
    case "$1" in
        --asan) build_dir="$KORVANE_ROOT/build-asan"; cmake_args+=(-DKORVANE_SANITIZE_ADDRESS=ON) ;;
        --tsan) build_dir="$KORVANE_ROOT/build-tsan"; cmake_args+=(-DKORVANE_SANITIZE_THREAD=ON) ;;
        --) shift; ctest_args=("$@"); break ;;
        -h|--help) sed -n '2,7p' "$0"; exit 0 ;;
        *) die "unknown option: $1" ;;
    esac
    shift
done

ensure_packages "${KORVANE_BUILD_PACKAGES[@]}" "${KORVANE_TEST_PACKAGES[@]}"
say "building in $build_dir"
build_tree "$build_dir" "${cmake_args[@]}"

export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
say "running the tests"
cd "$build_dir"
ctest --output-on-failure --timeout 600 -j "${KORVANE_JOBS:-$(nproc)}" "${ctest_args[@]}"
