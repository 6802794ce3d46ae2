# Shared by the scripts in scripts/: installs what is missing and builds.
# Source it; it expects KORVANE_ROOT to be set by the caller.

# Packages needed to build Korvane and run its programs.
KORVANE_BUILD_PACKAGES=(cmake ninja-build g++ pkg-config qt6-base-dev libblkid-dev)
# Peers and tools the test suite uses: skdump and smartctl as oracles, QEMU for
# the real-kernel test, Xvfb for window tests.
KORVANE_TEST_PACKAGES=(libatasmart-bin smartmontools qemu-system-x86 busybox-static cpio
                       python3 libcap2-bin e2fsprogs xvfb xauth)

say() { printf '==> %s\n' "$*"; }
die() { printf 'error: %s\n' "$*" >&2; exit 1; }

# Runs a command as root: directly when we are root, else through sudo.
as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null 2>&1; then
        sudo "$@"
    else
        return 1
    fi
}

# Installs the named Debian packages that are not installed yet.
ensure_packages() {
    local missing=() p
    for p in "$@"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    say "installing: ${missing[*]}"
    if ! command -v apt-get >/dev/null 2>&1; then
        die "missing packages (${missing[*]}) and no apt-get here: install them by hand"
    fi
    as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq \
        || die "apt-get update failed; run as root or install sudo, or install: ${missing[*]}"
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
        || die "could not install: ${missing[*]}"
}

# Configures and builds into $1 with any further arguments passed to cmake.
build_tree() {
    local dir=$1; shift
    cmake -S "$KORVANE_ROOT" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE="${KORVANE_BUILD_TYPE:-RelWithDebInfo}" "$@" >/dev/null \
        || die "cmake configuration failed (see above)"
    cmake --build "$dir" --parallel "${KORVANE_JOBS:-$(nproc)}" || die "build failed"
}
