#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole suite in release and then in asan.
#   --quick    without asan
#   --tsan     also under the thread sanitizer
set -euo pipefail
cd "$(dirname "$0")"

asan=asan
tsan=
for argument in "$@"; do
    case "$argument" in
        --quick) asan= ;;
        --tsan) tsan=tsan ;;
        *) echo "usage: ./test.sh [--quick] [--tsan]" >&2; exit 2 ;;
    esac
done

scripts/setup.sh
for preset in release $asan $tsan; do
    scripts/build.sh "$preset"
    ctest --preset "$preset"
done
