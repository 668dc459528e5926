#!/bin/sh
# Prints how many bytes the generated tables and the whole library take in the objects of a
# build, and fails when that is more than 1 MiB and 2 MiB. Usage: table_size.sh BUILD_DIR
set -eu
library="${1:?usage: table_size.sh BUILD_DIR}/lumrmisc"
objects=$(find "$library/platform" \
  \( -name 'codepage.cpp.o*' -o -name 'mbcs.cpp.o*' -o -name 'unicode.cpp.o*' \))
[ "$(echo "$objects" | wc -l)" -eq 3 ] || { echo "table_size.sh: no build in $1" >&2; exit 2; }
# Constants named k..., and the rest that the compiler put beside them.
size -A $objects | awk '
  $1 ~ /^\.(data\.rel\.ro|rodata|rdata)/ { total += $2 }
  END { printf "tables: %d bytes\n", total; exit total > 1048576 }'
find "$library" -name '*.cpp.o*' -exec size {} + | awk '
  $1 ~ /^[0-9]+$/ { total += $1 + $2 }
  END { printf "library: %d bytes\n", total; exit total > 2097152 }'
