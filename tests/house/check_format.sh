#!/usr/bin/env bash
# Fails when clang-format would change a source file of the tree: check_format.sh ROOT
set -euo pipefail
cd "$1"
find lumrmisc tools tests bench fuzz examples \( -name '*.cpp' -o -name '*.h' \) -print0 |
  xargs -0 clang-format --dry-run --Werror
