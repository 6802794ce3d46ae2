#!/usr/bin/env bash
# Installs what is missing, builds Korvane and runs the whole test suite.
#   scripts/run-tests.sh            normal build in build/
#   scripts/run-tests.sh --asan     AddressSanitizer + UBSan build in build-asan/
#   scripts/run-tests.sh --tsan     ThreadSanitizer build in build-tsan/
# Extra arguments after -- go to ctest (for example -- -R identify).
# The normal build also cross-builds the Windows pieces and runs their tests under wine
# (scripts/windows-tests.sh) when mingw-w64 and wine are there or can be installed; it says
# when they are skipped. KORVANE_WINDOWS_TESTS=0, or a selection after --, leaves them out.
# KORVANE_TESTDATA names the folder that holds smart-dumps/ (the real SMART
# dumps); by default ../shared/testdata beside the source tree.
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
        -h|--help) sed -n '2,11p' "$0"; exit 0 ;;
        *) die "unknown option: $1" ;;
    esac
    shift
done
if [ -n "${KORVANE_TESTDATA:-}" ]; then
    cmake_args+=(-DKORVANE_TESTDATA="$KORVANE_TESTDATA")
fi

# ctest counts a skipped test as passed: name each one, and those that wanted
# the real SMART dumps apart.
report_skips() {
    local skips for_dumps others
    skips=$(sed -n 's/^SKIP *: *//p' Testing/Temporary/LastTest.log 2>/dev/null || true)
    for_dumps=$(grep -i 'SMART dump' <<<"$skips" || true)
    others=$(grep -vi 'SMART dump' <<<"$skips" || true)
    if [ -n "$for_dumps" ]; then
        say "skipped for want of the real SMART dumps:"
        sed 's/^/    /' <<<"$for_dumps"
    fi
    if [ -n "$others" ]; then
        say "skipped for other reasons:"
        sed 's/^/    /' <<<"$others"
    fi
}

start_log "$build_dir"
ensure_packages "${KORVANE_BUILD_PACKAGES[@]}" "${KORVANE_TEST_PACKAGES[@]}"
build_tree "$build_dir" "${cmake_args[@]}"

# The folder the tests were configured with, which may come from an earlier run.
testdata=$(realpath -m "$(sed -n 's/^KORVANE_TESTDATA:[A-Z]*=//p' "$build_dir/CMakeCache.txt")")
if [ ! -d "$testdata/smart-dumps" ]; then
    say "no real SMART dumps in $testdata/smart-dumps: the tests that read them will be skipped" \
        "(set KORVANE_TESTDATA to the folder that holds smart-dumps/)"
fi

export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
say "running the tests"
cd "$build_dir"
status=0
ctest --output-on-failure --timeout 600 -j "${KORVANE_JOBS:-$(nproc)}" "${ctest_args[@]}" || status=$?

report_skips

# The Windows side needs no sanitizer build of its own: it runs once, with the normal build.
if [ "$build_dir" != "$KORVANE_ROOT/build" ]; then
    :
elif [ "${KORVANE_WINDOWS_TESTS:-1}" = 0 ]; then
    say "SKIPPED the Windows tests: KORVANE_WINDOWS_TESTS=0"
elif [ ${#ctest_args[@]} -gt 0 ]; then
    say "SKIPPED the Windows tests: ctest was given a selection (run scripts/windows-tests.sh for them)"
else
    say "the Windows pieces, cross-built and run under wine"
    "$KORVANE_ROOT/scripts/windows-tests.sh" --if-possible || status=$?
fi
exit "$status"
