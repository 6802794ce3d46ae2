#!/usr/bin/env bash
# Cross-builds the Windows side of Korvane (the plain C++ pieces over Win32, see windows/) with
# mingw-w64 and runs its tests under wine:
#   64-bit in build-windows/, 32-bit in build-windows32/, each with a wine prefix of its own.
# The 32-bit tests run only where wine can run 32-bit programs (Debian: wine32:i386, which
# --wine32 installs, adding the i386 architecture); otherwise they are built, only the checks
# that need no wine run (the Qt code's Windows branches compiled for syntax), and the script
# says so.
# --if-possible: when the cross compilers and wine cannot be installed, say so and end with 0
# (run-tests.sh runs it so).
# Extra arguments after -- go to ctest (for example -- -R runkey).
set -euo pipefail
KORVANE_ROOT=$(cd "$(dirname "$0")/.." && pwd)
. "$KORVANE_ROOT/scripts/lib/common.sh"

ctest_args=()
if_possible=0
with_wine32=0
while [ $# -gt 0 ]; do
    case "$1" in
        --if-possible) if_possible=1 ;;
        --wine32) with_wine32=1 ;;
        --) shift; ctest_args=("$@"); break ;;
        -h|--help) sed -n '2,11p' "$0"; exit 0 ;;
        *) die "unknown option: $1" ;;
    esac
    shift
done

KORVANE_WINDOWS_PACKAGES=(cmake ninja-build g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix wine wine64)

# Configures and builds windows/ into $1 for the toolchain file $2.
cross_build() {
    local dir=$1 toolchain=$2
    say "configuring in $dir"
    logged "cmake configuration failed" \
        cmake -S "$KORVANE_ROOT/windows" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE="${KORVANE_BUILD_TYPE:-RelWithDebInfo}" \
        -DCMAKE_TOOLCHAIN_FILE="$KORVANE_ROOT/cmake/$toolchain"
    say "building"
    logged "the build failed" cmake --build "$dir" --parallel "${KORVANE_JOBS:-$(nproc)}"
}

# Runs the tests of the build in $1 under wine; their prefix and WINEDEBUG come from the build.
run_tests() {
    say "running the tests under wine (the first run makes the wine prefix, some seconds)"
    # A prefix made while wine ran 64-bit programs only has no syswow64, and once wine32 is
    # installed the launcher cannot start it ("could not load kernel32.dll"): it is made again.
    if wine_runs_32bit && [ -d "$1/wineprefix" ] && [ ! -d "$1/wineprefix/drive_c/windows/syswow64" ]; then
        rm -rf "$1/wineprefix"
    fi
    (cd "$1" && ctest --output-on-failure --timeout 300 -j "${KORVANE_JOBS:-$(nproc)}" "${ctest_args[@]}")
}

wine_runs_32bit() {
    dpkg-query -W -f='${Status}' wine32:i386 2>/dev/null | grep -q 'install ok installed'
}

# Lets wine run 32-bit programs: Debian's wine32 comes from the i386 architecture. When it cannot
# be installed, an architecture added for it goes again: its indexes may be what failed, and
# would then fail every later apt-get update.
install_wine32() {
    wine_runs_32bit && return 0
    find_root_access "installing wine32:i386" "dpkg --add-architecture i386 && apt-get update && apt-get install wine32:i386"
    local added=0
    dpkg --print-foreign-architectures | grep -qx i386 || added=1
    say "installing wine32:i386"
    local apt=("${AS_ROOT[@]}" env DEBIAN_FRONTEND=noninteractive apt-get)
    if "${AS_ROOT[@]}" dpkg --add-architecture i386 && "${apt[@]}" update >>"$KORVANE_LOG" 2>&1 \
        && "${apt[@]}" install -y --no-install-recommends wine32:i386 >>"$KORVANE_LOG" 2>&1; then
        return 0
    fi
    tail -n 15 "$KORVANE_LOG" | sed 's/^/    /' >&2
    if [ "$added" = 1 ]; then
        "${AS_ROOT[@]}" dpkg --remove-architecture i386 && "${apt[@]}" update >>"$KORVANE_LOG" 2>&1 || true
    fi
    return 1
}

start_log "$KORVANE_ROOT/build-windows"
if [ "$if_possible" = 1 ]; then
    # In a subshell, so that a failed install ends only the attempt; it has said why.
    if ! (ensure_packages "${KORVANE_WINDOWS_PACKAGES[@]}"); then
        say "SKIPPED the Windows tests: the cross compilers and wine could not be installed"
        exit 0
    fi
else
    ensure_packages "${KORVANE_WINDOWS_PACKAGES[@]}"
fi
if [ "$with_wine32" = 1 ] && ! (install_wine32); then
    say "wine32:i386 could not be installed (the end of the log above)"
fi
status=0
cross_build "$KORVANE_ROOT/build-windows" mingw-w64-x86_64.cmake
run_tests "$KORVANE_ROOT/build-windows" || status=$?

start_log "$KORVANE_ROOT/build-windows32"
cross_build "$KORVANE_ROOT/build-windows32" mingw-w64-i686.cmake
if wine_runs_32bit; then
    run_tests "$KORVANE_ROOT/build-windows32" || status=$?
else
    say "SKIPPED the 32-bit tests under wine: wine cannot run 32-bit programs here (no wine32:i386;" \
        "--wine32 installs it). They were built, not run; the Qt code's Windows branches are checked"
    (cd "$KORVANE_ROOT/build-windows32" && ctest --output-on-failure -j "${KORVANE_JOBS:-$(nproc)}" -R '^windows_branches:') \
        || status=$?
fi
exit "$status"
