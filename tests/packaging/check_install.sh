#!/usr/bin/env bash
# Installs a built rvgraphics tree into a temporary prefix and checks that an
# application can use it: the installed layout, a consumer built with CMake's
# find_package(rvgraphics) and a consumer built with pkg-config, both run
# against the installed library.
#
# usage: check_install.sh <build dir> <c++ compiler> [<sanitizer flags>] [<version>]
# The sanitizer flags (may be empty) are used to compile and link the
# consumers, as a sanitized library needs a sanitized program to load it.
set -euo pipefail

build_dir=$(cd "$1" && pwd)
cxx=$2
sanitize_flags=${3:-}
version=${4:-}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
consumer_src="$here/consumer"
expected="point 12 23 area 16 version ${version:-0.1.0}"

work=$(mktemp -d "${TMPDIR:-/tmp}/rvgraphics-packaging.XXXXXX")
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"

fail() {
    echo "FAIL: $*" >&2
    exit 1
}

# Runs a command quietly; on failure shows its output and stops.
quiet() {
    local log="$work/step.log"
    if ! "$@" >"$log" 2>&1; then
        cat "$log" >&2
        fail "command failed: $*"
    fi
}

echo "== install into $prefix"
quiet cmake --install "$build_dir" --prefix "$prefix"

echo "== installed layout"
for header in rvgraphics.h rvgraphics_global.h geometry/kopoint.h; do
    [[ -f "$prefix/include/rvgraphics/$header" ]] || fail "missing header include/rvgraphics/$header"
done
real_lib=$(find "$prefix" -name "librvgraphics.so.*.*.*" -type f | head -n 1)
[[ -n "$real_lib" ]] || fail "no librvgraphics.so.X.Y.Z installed"
libdir=$(dirname "$real_lib")
[[ -L "$libdir/librvgraphics.so" ]] || fail "missing development symlink librvgraphics.so"
soname=$(readelf -d "$real_lib" | sed -n 's/.*(SONAME).*\[\(.*\)\].*/\1/p')
[[ "$soname" == librvgraphics.so.0 ]] || fail "unexpected SONAME '$soname'"
[[ -L "$libdir/$soname" ]] || fail "missing SONAME symlink $soname"
[[ -f "$libdir/cmake/rvgraphics/rvgraphicsConfig.cmake" ]] || fail "missing CMake package file"
[[ -f "$libdir/pkgconfig/rvgraphics.pc" ]] || fail "missing rvgraphics.pc"
echo "   $(basename "$real_lib") (SONAME $soname) in ${libdir#"$prefix"/}"

# Runs a consumer against the installed library and checks what it prints
# and which library it loaded.
run_consumer() {
    local exe=$1 output loaded
    loaded=$(LD_LIBRARY_PATH="$libdir" ldd "$exe" | awk '/librvgraphics/ { print $3 }')
    [[ "$loaded" == "$libdir"/* ]] || fail "$exe loads '$loaded', not the installed library"
    output=$(LD_LIBRARY_PATH="$libdir" "$exe") || fail "$exe exited with status $?"
    [[ "$output" == "$expected" ]] || fail "$exe printed '$output', expected '$expected'"
    echo "   $output"
}

echo "== consumer through find_package(rvgraphics)"
quiet cmake -S "$consumer_src" -B "$work/cmake-consumer" \
    -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_FIND_PACKAGE_NO_PACKAGE_REGISTRY=ON \
    -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_CXX_FLAGS="$sanitize_flags" \
    -DCMAKE_EXE_LINKER_FLAGS="$sanitize_flags"
quiet cmake --build "$work/cmake-consumer"
run_consumer "$work/cmake-consumer/consumer"

echo "== consumer through pkg-config"
export PKG_CONFIG_PATH="$libdir/pkgconfig${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}"
pc_version=$(pkg-config --modversion rvgraphics) || fail "pkg-config does not find rvgraphics"
[[ -z "$version" || "$pc_version" == "$version" ]] || fail "pkg-config version $pc_version, expected $version"
read -r -a pc_flags <<<"$(pkg-config --cflags --libs rvgraphics)"
read -r -a extra_flags <<<"$sanitize_flags"
quiet "$cxx" -std=c++17 -Wall -Wextra -Werror "${extra_flags[@]}" \
    "$consumer_src/main.cpp" -o "$work/pc-consumer" "${pc_flags[@]}"
run_consumer "$work/pc-consumer"

echo "packaging: OK"
