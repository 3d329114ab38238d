#!/usr/bin/env bash
# Installs what building, testing and benchmarking need. The one list of packages; silent when all is there.
set -euo pipefail

packages=(
    g++ cmake ninja-build pkg-config    # build
    zlib1g-dev libvorbis-dev            # the library itself
    libfreetype-dev libfontconfig1-dev
    fonts-dejavu-core                   # tests of fonts
    libzip-dev                          # plugin for zip archives
    libsdl2-dev                         # windows, dialogs and input
    libopenal-dev libsndfile1-dev       # sound devices, other sound files
    xvfb xauth xdotool                  # tests of those
    python3                             # rules of the tree, the sample host's media
    libpng-dev                          # pictures of tools and hosts
    libcli11-dev libedit-dev            # command lines of hosts and tools, the host's console
    libgtest-dev                        # tests
    clang-format-14 clang-tidy-14       # checks of the sources
    doxygen                             # reference of the headers
    clang-14 libclang-rt-14-dev         # second compiler, fuzzers
    libbenchmark-dev                    # benchmarks, and the peers in them:
    libabsl-dev
    libavcodec-dev
    libbullet-dev
    libdeflate-dev
    libeigen3-dev
    libfftw3-dev
    libglm-dev
    libgoogle-perftools-dev
    libkissfft-dev
    libmimalloc-dev
    libphysfs-dev
    libspdlog-dev
    libssl-dev
    libstb-dev
    libtbb-dev
    libtiff-dev
    libyuv-dev
    libzstd-dev
    re2c
)

missing=()
for package in "${packages[@]}"; do
    state=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -eq 0 ] || sudo=sudo
echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
