#!/usr/bin/env bash
# Installs what is missing, builds release and runs the sample host for a bounded number of frames.
# Arguments go to the host in place of the usual ones: ./run.sh --help
set -euo pipefail
cd "$(dirname "$0")"

scripts/setup.sh
scripts/build.sh release

if [ $# -eq 0 ]; then
    set -- --frames 300 --fps 100 --log build/release/debug.log --profile build/release/profile.txt
fi
exec build/release/bin/qelHost "$@"
