#!/usr/bin/env bash
# Compares the C++ files of the tree with the lists that the build works from, so that no source,
# header or test is left out in silence. For CTest: listed_files.sh TREE LIST.
set -euo pipefail

cd "$1"
tree=$({ find wqdata -name '*.h' -o -name '*.cpp'; find tests -maxdepth 1 -name '*.cpp'; } | sort)
if ! diff --label "in the tree" --label "in the CMake lists" -U0 \
  <(echo "$tree") <(sort -u "$2"); then
  echo "add the file to cmake/files.cmake or tests/CMakeLists.txt" >&2
  exit 1
fi
