#!/usr/bin/env bash
# Makes a fresh Debian 12 ready: installs the packages that a job needs, by name, and lays the
# sources of mimalloc and LZ4 into build/deps, where the presets look for them.
#
# usage: bootstrap.sh [demo|test|bench|coverage|all]     what to get ready for; all if not given
#
# What is there already is left alone, so a second run takes no time and needs no network. Without
# the right to install, it says what is missing and ends with 1.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
job=${1:-all}

build="build-essential cmake ninja-build ccache dpkg-dev xz-utils ca-certificates libcli11-dev
  libdw-dev libstb-dev fonts-dejavu-core"
checks="googletest binutils python3 pkg-config"
windows="g++-mingw-w64-x86-64-posix wine64"
clang="clang-19 libclang-rt-19-dev lld-19 llvm-19"
# opens the crash dumps that the tests write
dump_reader="lldb-19"
# shows the page that the demo writes
browser="chromium"
static_checks="clang-format-19 clang-tidy-19 doxygen"
# what the benchmarks compare with
peers="libbenchmark-dev libboost-dev libbullet-dev libcgal-dev libeigen3-dev libenet-dev libglm-dev
  libtbb-dev libunwind8 uuid-dev python3"
curves="python3-matplotlib"

case $job in
  demo) packages="$build" ;;
  test) packages="$build $checks $windows $clang $dump_reader $browser $static_checks $peers" ;;
  bench) packages="$build $checks $peers $curves" ;;
  coverage) packages="$build $checks $clang $dump_reader $browser" ;;
  all) packages="$build $checks $windows $clang $dump_reader $browser $static_checks $peers $curves" ;;
  *) sed -n '2,/^set /{s/^# \{0,1\}//;/^set /!p}' "$0"; exit 2 ;;
esac

# The upstream versions that the library is built and tested with.
mimalloc_version=2.0.9
lz4_version=1.9.4

is_installed() { [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# Root does it directly; who may use sudo without being asked, through it.
as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"; else sudo -n "$@"; fi
}

install_packages() {
  local missing=() package
  for package in $packages; do is_installed "$package" || missing+=("$package"); done
  [ ${#missing[@]} -gt 0 ] || return 0
  if [ "$(id -u)" != 0 ] && ! sudo -n true 2>/dev/null; then
    echo "bootstrap: these packages are missing, and only root can install them:" >&2
    echo "  apt-get install --no-install-recommends ${missing[*]}" >&2
    return 1
  fi
  echo "bootstrap: installing ${missing[*]}"
  local install=(apt-get install -y -q --no-install-recommends "${missing[@]}")
  export DEBIAN_FRONTEND=noninteractive
  # The machine's lists may be old or empty: refreshed only then.
  as_root "${install[@]}" >/dev/null 2>&1 && return 0
  as_root apt-get update -q >/dev/null
  as_root "${install[@]}" >/dev/null
}

# The machine's own Debian entries, as entries for source packages, into the folder $1.
write_source_entries() {
  local file
  for file in /etc/apt/sources.list.d/*.sources; do
    [ -e "$file" ] || continue
    awk 'BEGIN { RS = ""; ORS = "\n\n" }
      /debian-archive-keyring/ { gsub(/Types:[^\n]*/, "Types: deb-src"); print }' \
      "$file" >"$1/$(basename "$file")"
  done
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -e "$file" ] || continue
    sed -n 's/^[[:space:]]*deb[[:space:]]/deb-src /p' "$file" | grep -i debian \
      >"$1/$(basename "$file" .list)-words.list" || true
  done
}

# fetch_sources <package>...: verified source archives, unpacked into build/deps/<package>. apt
# checks the signatures with the machine's own keys and lists of its own in a scratch folder, so
# neither root nor a change to the machine is needed.
fetch_sources() (
  scratch=$(mktemp -d)
  trap 'rm -rf "$scratch"' EXIT
  mkdir -p "$scratch"/{state/lists/partial,cache/archives/partial,parts,prefs}
  write_source_entries "$scratch/parts"
  options=(-q -o Dir::State="$scratch/state" -o Dir::State::status=/var/lib/dpkg/status
    -o Dir::Cache="$scratch/cache" -o Dir::Etc::sourcelist=/dev/null
    -o Dir::Etc::sourceparts="$scratch/parts" -o Dir::Etc::preferencesparts="$scratch/prefs"
    -o Acquire::Languages=none -o APT::Get::AllowUnauthenticated=false)
  if [ "$(id -u)" = 0 ]; then options+=(-o APT::Sandbox::User=root); fi
  cd "$scratch"
  apt-get "${options[@]}" update >/dev/null
  apt-get "${options[@]}" --download-only --only-source source "$@" >/dev/null
  for package in "$@"; do
    rm -rf "$root/build/deps/$package"
    mkdir -p "$root/build/deps"
    # --no-check: the uploader's own signature needs a further key ring; apt's chain is the guard.
    dpkg-source --no-check -x "$package"_*.dsc "$scratch/$package" >/dev/null
    upstream=$(sed -n 's/^Version: \([0-9.]*\).*/\1/p' "$package"_*.dsc)
    echo "$upstream" >"$scratch/$package/.version"
    mv "$scratch/$package" "$root/build/deps/$package"
  done
)

lay_sources() {
  local missing=() package version
  for package in mimalloc lz4; do
    version=${package}_version
    [ "$(cat "$root/build/deps/$package/.version" 2>/dev/null)" = "${!version}" ] || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  echo "bootstrap: fetching the sources of ${missing[*]}"
  fetch_sources "${missing[@]}"
  for package in "${missing[@]}"; do
    version=${package}_version
    if [ "$(cat "$root/build/deps/$package/.version")" != "${!version}" ]; then
      echo "bootstrap: $package is $(cat "$root/build/deps/$package/.version")," \
        "built and tested with ${!version}" >&2
      return 1
    fi
  done
}

install_packages
lay_sources
