#!/usr/bin/env bash
# Builds the reference of the headers into build/docs; fails on a warning of the tool.
set -euo pipefail
cd "$(dirname "$0")/.."

mkdir -p build/docs
doxygen Docs/Doxyfile
echo "check-docs: build/docs/html/index.html is without a warning"
