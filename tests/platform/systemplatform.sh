#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

# Installs the bundled platform of the build into an empty prefix, then builds the plug-in against that
# prefix, and nothing else of this build, and looks at the result. What it needs to know comes in the
# environment; see CMakeLists.txt.

set -eu

fail() {
    echo "systemplatform: $*" >&2
    exit 1
}

expect_equal() {
    [ "$2" = "$3" ] || fail "$1 is '$2' instead of '$3'"
}

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'exit 1' HUP INT TERM
scratch=$(cd "$scratch" && pwd -P)
prefix=$scratch/prefix
plugin_build=$scratch/build

"$CMAKE" --install "$BUILD" --prefix "$prefix" --component platform

PKG_CONFIG_PATH=$prefix/$LIBDIR/pkgconfig
export PKG_CONFIG_PATH
plugin_dir=$(realpath -m "$("$PKG_CONFIG" --variable=plugindir voicecall)")
expect_equal "the plug-in directory" "$plugin_dir" "$prefix/$LIBDIR/voicecall/plugins"

"$CMAKE" -S "$SOURCE" -B "$plugin_build" -G "$GENERATOR" -DCMAKE_BUILD_TYPE="$BUILD_TYPE" \
    -DCMAKE_CXX_COMPILER="$CXX" -DRINGLET_SANITIZE="$SANITIZE" \
    -DRINGLET_PLATFORM=system -DRINGLET_BUILD_KIT=OFF -DRINGLET_WERROR=ON
"$CMAKE" --build "$plugin_build"
[ ! -e "$plugin_build/platform" ] || fail "the build for the system's platform has built platform/, too"
"$CMAKE" --install "$plugin_build" --prefix "$scratch/elsewhere" --component plugin

# The plug-in goes where the host looks, whatever prefix the rest is installed to.
plugin=$plugin_dir/libvoicecall-ringlet-plugin.so
[ -f "$plugin" ] || fail "no plug-in was installed at $plugin"

needed=$("$READELF" --wide --dynamic "$plugin" | sed -n 's/.*(NEEDED).*\[\(libvoicecall.*\)\]/\1/p')
expect_equal "the host library that the plug-in names" "$needed" libvoicecall.so.1

# The plug-in finds the host library of the prefix, through nothing but the loader's path.
found=$(LD_LIBRARY_PATH=$prefix/$LIBDIR ldd "$plugin" | sed -n 's/.*libvoicecall\.so\.1 => \([^ ]*\).*/\1/p')
expect_equal "the host library that is loaded" "$found" "$prefix/$LIBDIR/libvoicecall.so.1"
LD_LIBRARY_PATH=$prefix/$LIBDIR "$PROBE" "$plugin" >"$scratch/found" || fail "the installed plug-in does not load"
expect_equal "how many objects the plug-in gave" "$(grep -c '"hostInterface": true' "$scratch/found")" 2
