#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

# Installs the client library of the build into an empty prefix, then builds a program against that prefix,
# and nothing else of this build, in the two ways that projects have: with find_package() and with
# pkg-config. What it needs to know comes in the environment; see CMakeLists.txt.

set -eu

fail() {
    echo "outside: $*" >&2
    exit 1
}

rm -rf "$OUTSIDE"
mkdir -p "$OUTSIDE/project"
prefix=$OUTSIDE/prefix
"$CMAKE" --install "$BUILD" --prefix "$prefix" --component client

cp "$PROGRAM" "$OUTSIDE/project/main.cpp"
cat >"$OUTSIDE/project/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.16)
project(outside LANGUAGES CXX)
find_package(RingletClient $VERSION REQUIRED)
add_executable(with-cmake main.cpp)
target_link_libraries(with-cmake PRIVATE RingletClient::RingletClient)
END
"$CMAKE" -S "$OUTSIDE/project" -B "$OUTSIDE/project/build" -G "$GENERATOR" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="$FLAGS"
"$CMAKE" --build "$OUTSIDE/project/build"
mv "$OUTSIDE/project/build/with-cmake" "$OUTSIDE/with-cmake"

PKG_CONFIG_PATH=$prefix/$LIBDIR/pkgconfig
export PKG_CONFIG_PATH
[ "$("$PKG_CONFIG" --modversion RingletClient)" = "$VERSION" ] || fail "pkg-config does not know version $VERSION"
# The options are words of their own.
# shellcheck disable=SC2046,SC2086
"$CXX" $FLAGS -fPIC $("$PKG_CONFIG" --cflags RingletClient) "$OUTSIDE/project/main.cpp" \
    -o "$OUTSIDE/with-pkg-config" $("$PKG_CONFIG" --libs RingletClient)

# Both load the library of the prefix, and no other.
for program in with-cmake with-pkg-config; do
    found=$(LD_LIBRARY_PATH=$prefix/$LIBDIR ldd "$OUTSIDE/$program" | sed -n 's/.*libRingletClient[^ ]* => \([^ ]*\).*/\1/p')
    case $found in
    "$prefix/$LIBDIR"/*) ;;
    *) fail "$program loads '$found'" ;;
    esac
done

# The simulator needs no help to find it.
"$CMAKE" --install "$BUILD" --prefix "$prefix" --component kit
"$prefix/bin/ringlet-sim" --list-scenarios | grep -q '^incoming-call ' || fail "the installed ringlet-sim does not run"
