#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole suite in release and then in asan.
#   --quick    release only
#   --tsan     also under the thread sanitizer
set -euo pipefail
cd "$(dirname "$0")"

presets=(release asan)
for argument in "$@"; do
    case "$argument" in
        --quick) presets=(release) ;;
        --tsan) presets+=(tsan) ;;
        *) echo "usage: ./test.sh [--quick] [--tsan]" >&2; exit 2 ;;
    esac
done

scripts/setup.sh
for preset in "${presets[@]}"; do
    scripts/build.sh "$preset"
    ctest --preset "$preset"
done
