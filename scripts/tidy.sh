#!/usr/bin/env bash
# Runs the short list of .clang-tidy over the library's sources for Linux, and ends with 1 if it
# finds anything. The build tree of the sanitizers must be configured: it is clang's own.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# Once each, as the library has it: test programs compile some of them again.
mkdir -p build/tidy
sources=$(python3 - <<'EOF'
import json, os
first = {}
for entry in json.load(open("build/linux-asan/compile_commands.json")):
    if os.path.relpath(os.path.realpath(entry["file"])).startswith("morvantis/"):
        first.setdefault(entry["file"], entry)
json.dump(list(first.values()), open("build/tidy/compile_commands.json", "w"))
print(*sorted(first), sep="\n")
EOF
)
[ "$sources" ] || { echo "no sources in build/linux-asan/compile_commands.json" >&2; exit 1; }
echo "$sources" | xargs -P2 -n4 clang-tidy-19 -p build/tidy --quiet 2>&1 |
  { grep -vE '^\[[0-9]+/[0-9]+\] Processing|warnings? (.* )?generated\.' || true; }
echo "$(wc -l <<<"$sources") sources are clean"
