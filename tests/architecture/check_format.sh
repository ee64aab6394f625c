#!/usr/bin/env bash
# Fails when a C or C++ file of the project is not formatted as .clang-format says, naming it.
#   check_format.sh CLANG_FORMAT ROOT
set -euo pipefail
cd "$2"
find src tests bench fuzz -type f \( -name '*.c' -o -name '*.cpp' -o -name '*.h' \) -print0 |
  sort -z | xargs -0 "$1" --dry-run -Werror
