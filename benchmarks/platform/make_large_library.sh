#!/bin/sh
# usage: make_large_library.sh <compiler> <large_unit.cpp> <folder>
#
# Makes <folder>/liblarge.so, some 50 MB, of 25 units. The source is compiled to assembly once, and
# each unit is that text with another name for its namespace, of the same length.
set -e
compiler=$1
source=$2
folder=$3
mkdir -p "$folder"
"$compiler" -std=c++20 -g -O1 -fPIC -S "$source" -o "$folder/unit_00.s"
for number in $(seq -w 1 25); do
  sed "s/unit_00/unit_$number/g" "$folder/unit_00.s" >"$folder/unit.s"
  "$compiler" -c "$folder/unit.s" -o "$folder/unit_$number.o"
done
"$compiler" -shared -Wl,--build-id=sha1 "$folder"/unit_*.o -o "$folder/liblarge.so"
rm "$folder"/unit*
