#!/usr/bin/env bash
# Configures and builds one preset. The compiler's own talk is shown only where something fails.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1

log=build/$preset.log
mkdir -p build
if ! { cmake --preset "$preset" && cmake --build --preset "$preset"; } >"$log" 2>&1; then
    tail -n 60 "$log" >&2
    echo "build: $preset failed; the whole log is $log" >&2
    exit 1
fi
echo "build: $preset is up to date"
