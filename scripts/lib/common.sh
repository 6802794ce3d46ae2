# Shared by the scripts in scripts/: installs what is missing and builds.
# Source it; it expects KORVANE_ROOT to be set by the caller, who then calls
# start_log with the build folder. Each step prints one line; what the tools
# say (apt-get, cmake, the build) goes to the log file, and its end is shown
# only when a step fails.

# Packages needed to build Korvane and run its programs.
KORVANE_BUILD_PACKAGES=(cmake ninja-build g++ pkg-config qt6-base-dev qt6-svg-dev qt6-qpa-plugins libblkid-dev fonts-dejavu-core)
# Peers and tools the test suite uses: skdump and smartctl as oracles, QEMU for
# the real-kernel test, Xvfb for window tests, pdftotext to read the manual back,
# a real SMTP server (aiosmtpd) and openssl for throwaway certificates.
KORVANE_TEST_PACKAGES=(libatasmart-bin smartmontools qemu-system-x86 busybox-static cpio dbus-daemon
                       python3 libcap2-bin e2fsprogs xvfb xauth poppler-utils python3-aiosmtpd openssl)

say() { printf '==> %s\n' "$*"; }
die() { printf 'error: %s\n' "$*" >&2; exit 1; }

# Starts this run's log in the build folder $1 (made when missing).
start_log() {
    mkdir -p "$1" || die "cannot create the build folder $1"
    KORVANE_LOG="$1/setup.log"
    : >"$KORVANE_LOG" || die "cannot write $KORVANE_LOG"
}

# Runs a command with its output in the log. When it fails, says $1 and shows
# the end of the log, then stops.
logged() {
    local failure=$1; shift
    printf '$ %s\n' "$*" >>"$KORVANE_LOG"
    if ! "$@" >>"$KORVANE_LOG" 2>&1; then
        printf 'error: %s. The end of %s:\n' "$failure" "$KORVANE_LOG" >&2
        tail -n 40 "$KORVANE_LOG" | sed 's/^/    /' >&2
        exit 1
    fi
}

# Whether sudo could ask for a password here: it asks on the terminal.
terminal_usable() { { : </dev/tty; } 2>/dev/null; }

# Sets AS_ROOT to what runs a command as root to $1: nothing for root, sudo
# when it can work here. Otherwise stops, saying why and what to run instead
# ($2, the command as root would type it).
find_root_access() {
    local what=$1 instead=$2
    AS_ROOT=()
    [ "$(id -u)" -eq 0 ] && return 0
    command -v sudo >/dev/null 2>&1 \
        || die "$what needs root: you are not root and there is no sudo here. As root, run: $instead"
    if ! sudo -n true 2>/dev/null && ! terminal_usable; then
        die "$what needs root, and sudo needs a password but cannot ask for one here (no terminal)." \
            "Run in a terminal: sudo $instead (or start this script from a terminal)"
    fi
    AS_ROOT=(sudo)
}

# Installs the named Debian packages that are not installed yet.
ensure_packages() {
    local missing=() p
    say "checking packages"
    for p in "$@"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    command -v apt-get >/dev/null 2>&1 \
        || die "missing packages (${missing[*]}) and no apt-get here: install them by hand"
    find_root_access "installing ${missing[*]}" "apt-get install ${missing[*]}"
    say "installing ${missing[*]}${AS_ROOT[*]:+ (through sudo, which may ask for your password)}"
    logged "apt-get update failed" "${AS_ROOT[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update
    logged "could not install ${missing[*]}" "${AS_ROOT[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}"
}

# Configures and builds into $1 with any further arguments passed to cmake.
build_tree() {
    local dir=$1; shift
    say "configuring in $dir"
    logged "cmake configuration failed" \
        cmake -S "$KORVANE_ROOT" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE="${KORVANE_BUILD_TYPE:-RelWithDebInfo}" "$@"
    say "building"
    logged "the build failed" cmake --build "$dir" --parallel "${KORVANE_JOBS:-$(nproc)}"
}
