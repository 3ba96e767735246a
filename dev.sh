#!/bin/sh
# Sets up, builds and runs Kestrada on Debian 12 (and its relatives).
#   ./dev.sh run [ARGS...]   install what is missing, build, start the program
#   ./dev.sh test            install what is missing, build, run every test
#   ./dev.sh build           install what is missing and build
# Builds are incremental, in build/ (and build-asan/ for the sanitizer run).
set -eu
cd "$(dirname "$0")"
# Let ccache serve compiles that use the precompiled headers.
export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros,include_file_mtime,include_file_ctime}"
# Paths below the checkout count as relative, so that a fresh clone elsewhere
# (as CI makes) finds what an earlier build left in the cache.
export CCACHE_BASEDIR="${CCACHE_BASEDIR:-$(pwd)}"
# Debug builds put the working folder into the objects, and ccache then keys
# them by it: without this, a clone in another folder never hits the cache.
export CCACHE_NOHASHDIR="${CCACHE_NOHASHDIR:-1}"

PACKAGES="build-essential cmake pkg-config ninja-build ccache
  qt6-base-dev qt6-5compat-dev qt6-multimedia-dev libqt6opengl6-dev
  qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools
  libqt6svg6 breeze-icon-theme
  libluajit-5.1-dev libuchardet-dev libbenchmark-dev
  xvfb xauth xdotool libgl1-mesa-dri libxkbcommon-dev"

install_packages() {
    missing=""
    for package in $PACKAGES; do
        if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
            missing="$missing $package"
        fi
    done
    [ -z "$missing" ] && return 0
    echo "Installing:$missing"
    if [ "$(id -u)" -eq 0 ]; then
        apt-get update
        DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing
    elif command -v sudo >/dev/null 2>&1; then
        sudo apt-get update
        sudo DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing
    else
        echo "Missing Debian packages:$missing (run as root, or install them first)" >&2
        exit 1
    fi
}

# configure DIR [CMAKE OPTIONS...]: once, then CMake keeps itself up to date.
configure() {
    dir=$1
    shift
    if [ ! -f "$dir/build.ninja" ]; then
        cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@"
    fi
}

build_main() {
    install_packages
    configure build
    cmake --build build
}

jobs() {
    nproc 2>/dev/null || echo 2
}

case "${1:-}" in
run)
    shift
    build_main
    exec build/bin/kestrada "$@"
    ;;
build)
    build_main
    ;;
test)
    build_main
    # The core once more under AddressSanitizer and UBSan: readers of
    # untrusted files must never step outside a buffer.
    configure build-asan -DKESTRADA_SANITIZE=ON -DKESTRADA_BUILD_GUI=OFF -DKESTRADA_BUILD_BENCH=OFF
    cmake --build build-asan
    sanitized=0
    ctest --test-dir build-asan -L core --output-on-failure -j "$(jobs)" || sanitized=1
    [ "$sanitized" -eq 0 ] || echo "*** The core tests failed under the sanitizers (see above) ***"
    # Where clang is present, each libFuzzer target runs briefly over its seeds.
    fuzzed=0
    if command -v clang++ >/dev/null 2>&1; then
        CXX=clang++ configure build-fuzz -DKESTRADA_BUILD_FUZZ=ON -DKESTRADA_BUILD_GUI=OFF -DKESTRADA_BUILD_BENCH=OFF
        cmake --build build-fuzz --target fuzz-all
        ctest --test-dir build-fuzz -L fuzz --output-on-failure -j "$(jobs)" || fuzzed=1
        [ "$fuzzed" -eq 0 ] || echo "*** A fuzz target failed (see above) ***"
    fi
    # Every test, last, so that the output ends with its summary.
    status=0
    ctest --test-dir build --output-on-failure -j "$(jobs)" || status=1
    [ "$sanitized" -eq 0 ] && [ "$fuzzed" -eq 0 ] && [ "$status" -eq 0 ]
    ;;
*)
    echo "usage: $0 run [ARGS...] | test | build" >&2
    exit 2
    ;;
esac
