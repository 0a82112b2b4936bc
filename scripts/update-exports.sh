#!/usr/bin/env bash
# Writes exports/cpp-names.txt anew from the library as both systems build it. Run it when the
# public interface changed, and look at the difference before committing it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
for preset in linux-release windows-release; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" --target morvantis
done
python3 scripts/check_exports.py update \
  build/linux-release/lib/libMorvantis.Library.so build/windows-release/bin/Morvantis.Library.dll
git --no-pager diff --stat -- exports/cpp-names.txt
