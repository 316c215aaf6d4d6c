#!/usr/bin/env bash
# Installs the kit from BUILD into a folder of its own and builds programs against it,
# with CMake and with pkg-config: test.sh BUILD COMPILER FLAGS
set -euo pipefail

build=$1 compiler=$2 flags=$3
here=$(dirname "$(realpath "$0")")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
expected=$'0\n12.5\n50\n87.5'

fail() {
    echo "$*" >&2
    exit 1
}
check() { # PROGRAM: prints what the kit computes, and links no toolkit
    [ "$("$1")" = "$expected" ] || fail "$1 printed $("$1")"
    ! ldd "$1" | grep -iE 'gtk|gio|lilv|avcodec|SDL' || fail "$1 links too much"
}

cmake --install "$build" --component Animation --prefix "$work/prefix" >"$work/install.log"
[ -z "$(find "$work/prefix" -name '*nspection*')" ] || fail "the tests' own header is installed"

curves=$work/prefix/bin/parvane-curves
"$curves" "$work/curves"
diff -r "$(dirname "$(find "$work/prefix/share/doc" -name index.html)")" "$work/curves" ||
    fail "the installed program draws otherwise than its page shows"
! ldd "$curves" | grep -iE 'glib|gtk' || fail "the program links too much"
page=$(find "$work/prefix" -name parvane-curves.1.gz)
for option in $("$curves" --help | grep -o -- '--[a-z]*'); do
    gzip -dc "$page" | grep -qF -- "${option//-/\\-}" || fail "the manual page lacks $option"
done

cmake -G Ninja -S "$here" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" >"$work/cmake.log" ||
    fail "$(cat "$work/cmake.log")"
cmake --build "$work/build" >"$work/build.log" || fail "$(cat "$work/build.log")"
check "$work/build/ten-lines"
check "$work/build/own-timers"
! ldd "$work/build/own-timers" | grep glib || fail "the kit itself links GLib"

PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name parvane-animation.pc)")
export PKG_CONFIG_PATH
read -ra arguments <<<"$flags $(pkg-config --cflags --libs parvane-animation-glib)"
"$compiler" -std=c++20 "$here/ten-lines.cpp" -o "$work/ten-lines" "${arguments[@]}"
check "$work/ten-lines"
read -ra arguments <<<"$flags $(pkg-config --cflags --libs parvane-animation)"
"$compiler" -std=c++20 "$here/own-timers.cpp" -o "$work/own-timers" "${arguments[@]}"
check "$work/own-timers"
