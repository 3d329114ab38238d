#!/usr/bin/env bash
# Fails if a source is not laid out as .clang-format has it. With --fix it lays them out.
set -euo pipefail
cd "$(dirname "$0")/.."

mode=(--dry-run --Werror)
[ "${1:-}" = --fix ] && mode=(-i)
git ls-files -z -- '*.h' '*.cpp' | xargs -0 -r clang-format-14 "${mode[@]}"
