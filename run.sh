#!/usr/bin/env bash
# Installs what is missing, builds release, runs the sample host over its media and packs a file. Then it opens
# the host's window where there is a display, and draws the same screens into pictures where there is none.
# Arguments go to the host in place of all that: ./run.sh --help
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

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] &&
    build/release/bin/qelHost --window --log build/release/window.log --profile build/release/profile.txt; then
    exit 0
fi
mkdir -p build/release/screens
for screen in frames files images particles model sound tasks console fonts; do
    build/release/bin/qelHost --headless --screen "$screen" --frames 100 --log build/release/screens/debug.log \
        --profile build/release/profile.txt --screenshot "build/release/screens/$screen.png" \
        2>build/release/screens/errors.txt || { tail build/release/screens/errors.txt >&2; exit 1; }
done
echo "pictures of the screens: build/release/screens"
