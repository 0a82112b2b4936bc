#!/usr/bin/env bash
# Runs the short list of .clang-tidy over the library's sources for Linux, and ends with 1 if it
# finds anything. The build tree of the sanitizers must be configured: it is clang's own.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
sources=$(sed -n 's/^ *"file": "\(.*\/morvantis\/.*\.cpp\)".*/\1/p' build/linux-asan/compile_commands.json |
  grep -v /tests/ | sort -u)
[ "$sources" ] || { echo "no sources in build/linux-asan/compile_commands.json" >&2; exit 1; }
echo "$sources" | xargs -P2 -n4 clang-tidy-19 -p build/linux-asan --quiet 2>&1 |
  { grep -vE '^\[[0-9]+/[0-9]+\] Processing|warnings? (.* )?generated\.' || true; }
echo "$(wc -l <<<"$sources") sources are clean"
