#!/usr/bin/env bash
# Installs what is missing, builds release, runs the sample host over its media and packs a
# file. Arguments go to the host in place of the usual ones: ./run.sh --help
set -euo pipefail
cd "$(dirname "$0")"

scripts/setup.sh
scripts/build.sh release

if [ $# -gt 0 ]; then
    exec build/release/bin/qelHost "$@"
fi
build/release/bin/qelHost --frames 300 --fps 100 --log build/release/debug.log --profile build/release/profile.txt --contact-sheet build/release/pictures.png
for codecs in zip lz77,huffman; do
    build/release/bin/qelpack encode "$codecs" Docs/decisions.md build/release/decisions.packed
    build/release/bin/qelpack decode "$codecs" build/release/decisions.packed build/release/decisions.md
    cmp Docs/decisions.md build/release/decisions.md
done
