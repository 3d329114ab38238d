#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole suite in release and then in asan.
#   --quick    release alone
#   --full     also under the thread sanitizer and built by clang
set -euo pipefail
cd "$(dirname "$0")"

presets="release asan"
case "${1:-}" in
    "") ;;
    --quick) presets="release" ;;
    --full) presets="release asan tsan clang" ;;
    *) echo "usage: ./test.sh [--quick | --full]" >&2; exit 2 ;;
esac

scripts/setup.sh
passed=""
for preset in $presets; do
    scripts/build.sh "$preset"
    ctest --preset "$preset" | tee "build/$preset.tests.log"
    count=$(sed -n 's/.*tests passed, 0 tests failed out of \([0-9]*\)$/\1/p' "build/$preset.tests.log")
    passed+="${passed:+, }$preset ${count:?"ctest has not told how many tests passed"}"
done
echo "all tests passed: $passed"
