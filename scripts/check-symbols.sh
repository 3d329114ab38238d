#!/usr/bin/env bash
# Fails if a library or a plugin of a build exports what is not meant to come out, or holds a GNU-unique
# symbol, which would keep it mapped after it has been closed.
#   scripts/check-symbols.sh build/release
set -euo pipefail
build=${1:?usage: check-symbols.sh BUILD_DIR}

faults=0
fault() {
    echo "$1: $2" >&2
    faults=$((faults + 1))
}

# exported MODULE: a line "TYPE NAME" for each symbol that comes out, and for each GNU-unique one. The address
# sanitizer adds a mark of its own to each variable.
exported() {
    nm -D --defined-only "$1" | awk '$3 !~ /^__odr_asan/ { print $2, $3 }'
}

# check_names MODULE PATTERN: every symbol that comes out fits the pattern
check_names() {
    local type name
    while read -r type name; do
        [ "$type" != u ] || fault "$1" "GNU-unique: $(c++filt "$name")"
        [[ "$name" =~ $2 ]] || fault "$1" "comes out and is not its own: $(c++filt "$name")"
    done < <(exported "$1")
}

# Of the names of C++: members of Qel and os with their static locals, tables, type information and thunks.
about='(T[VTIS]|GV|T(hn|v0_n)[0-9_n]+_)?Z?NK?'
check_names "$build/lib/libqelSystem.so" "^(_Z$about(3Qel|2os)|_ZN?K?[0-9]+D3DX|d3dx)"
check_names "$build/lib/libPoolHeap.so" "^_Z($about(8PoolHeap|7PoolBlk|10InternPool)|[0-9]+poolheap_(malloc|free))"

entry_points="dllStartPlugin dllStopPlugin"
platform="createPlatformConfigDialog createPlatformErrorDialog createPlatformInputReader \
createPlatformSplashDialog destroyPlatformConfigDialog destroyPlatformErrorDialog \
destroyPlatformInputReader destroyPlatformSplashDialog"
plugins=0
for plugin in "$build"/lib/qelSystem/plugins/*.so; do
    names=$(exported "$plugin" | awk '{ print $2 }' | LC_ALL=C sort | xargs)
    if [ "$names" != "$entry_points" ] && [ "$names" != "$platform" ]; then
        fault "$plugin" "exports neither the two entry points nor the eight of a platform, but: $names"
    fi
    if nm "$plugin" 2>/dev/null | grep ' u ' >&2; then
        fault "$plugin" "GNU-unique symbols"
    fi
    plugins=$((plugins + 1))
done

[ "$faults" -eq 0 ] || { echo "check-symbols: $faults faults in $build" >&2; exit 1; }
echo "check-symbols: 2 libraries and $plugins plugins of $build export what they should"
