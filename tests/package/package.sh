#!/usr/bin/env bash
# One step of the package tests, for CTest, which sets the variables: package.sh STEP KIND, with the
# kind shared or static.
#   install            builds and installs into a prefix, and looks at what is there
#   find_package       the program against the prefix, through the CMake package
#   pkg_config         the program against the prefix, through pkg-config and the bare compiler
#   add_subdirectory   the program with the tree as a part of its own build
set -euo pipefail

step=$1 kind=$2
consumer=$WQDATA_TREE/tests/package/consumer
dir=$WQDATA_WORK/$step
prefix=$WQDATA_WORK/moved
case $kind in
  shared) shared_option=-DBUILD_SHARED_LIBS=ON expect_static=-DEXPECT_STATIC=0 ;;
  static) shared_option=-DBUILD_SHARED_LIBS=OFF expect_static=-DEXPECT_STATIC=1 ;;
esac
options=(-G Ninja -DCMAKE_BUILD_TYPE=None -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
  "-DCMAKE_CXX_COMPILER=$CXX")

fail() {
  echo "package.$1" >&2
  exit 1
}

# build SOURCE [OPTION...] configures and builds in $dir.
build() {
  "$CMAKE" -S "$1" -B "$dir" "${options[@]}" "${@:2}"
  "$CMAKE" --build "$dir"
}

# The shared library is loaded by its soname, and the static program must not want one.
check_linkage() {
  local needed
  needed=$(readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(libwqdata.*\)\]/\1/p')
  local soname=
  [[ $kind == shared ]] && soname=libwqdata.so.${WQDATA_VERSION%.*}
  [[ $needed == "$soname" ]] || fail "$step: needs '$needed', expected '$soname'"
}

# The prefix is moved after the installation: a package must not remember where it was put.
install() {
  build "$WQDATA_TREE" "$shared_option" -DWQDATA_BUILD_TESTS=OFF -DWQDATA_BUILD_EXAMPLES=OFF
  "$CMAKE" --install "$dir" --prefix "$WQDATA_WORK/first"
  mv "$WQDATA_WORK/first" "$prefix"

  (cd "$prefix/include" && find . -type f -printf '%P\n' | LC_ALL=C sort) |
    diff --label "public headers" --label installed -U0 "$WQDATA_HEADERS" - ||
    fail "install: the installed headers are not those of cmake/files.cmake"
  if grep -rlF -e "$WQDATA_TREE" -e "$WQDATA_WORK" "$prefix" --include='*.cmake' --include='*.pc'; then
    fail "install: these files hold a path of the machine that built them"
  fi
}

find_package() {
  build "$consumer" "$expect_static" "-DCMAKE_PREFIX_PATH=$prefix" \
    "-DEXPECTED_VERSION=$WQDATA_VERSION"
  "$dir/consumer"
  check_linkage "$dir/consumer"
}

# Here the headers are not system headers: a strict embedder's warnings see them.
pkg_config() {
  local module="$PKG_CONFIG"
  [[ $kind == static ]] && module+=" --static"
  export PKG_CONFIG_PATH
  PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name wqdata.pc)")
  [[ $($module --modversion wqdata) == "$WQDATA_VERSION" ]] || fail "pkg_config: version"
  mkdir -p "$dir"
  # shellcheck disable=SC2046
  "$CXX" -std=c++20 -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow \
    -Wold-style-cast -Wundef -Werror "$expect_static" "$consumer/main.cpp" -o "$dir/consumer" \
    $($module --cflags --libs wqdata)
  LD_LIBRARY_PATH=$($module --variable=libdir wqdata) "$dir/consumer"
  check_linkage "$dir/consumer"
}

# The embedder makes warnings fatal, in its own code alone, and that code has what our warnings
# would find. One that does not say which kind it wants gets the shared library.
add_subdirectory() {
  local options_given=("$expect_static" "-DWQDATA_TREE=$WQDATA_TREE"
    -DCMAKE_COMPILE_WARNING_AS_ERROR=ON)
  [[ $kind == static ]] && options_given+=("$shared_option")
  build "$consumer" "${options_given[@]}"
  "$dir/consumer"
  check_linkage "$dir/consumer"
  local ours
  ours=$(grep '"command".*/wqdata/blocks/datablock\.cpp' "$dir/compile_commands.json")
  [[ $ours != *-Werror* ]] || fail "add_subdirectory: the embedder's -Werror reached us: $ours"
}

rm -rf "$dir"
[[ $step == install ]] && rm -rf "$prefix" "$WQDATA_WORK/first"
"$step"
