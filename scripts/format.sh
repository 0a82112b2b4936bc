#!/usr/bin/env bash
# Formats the C++ files of the repository; with --check, says which ones differ and ends with 1.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mode=(-i)
if [ "${1:-}" = --check ]; then mode=(--dry-run -Werror); fi
git ls-files --cached --others --exclude-standard '*.h' '*.cpp' | xargs -r -P2 -n40 clang-format-19 "${mode[@]}"
