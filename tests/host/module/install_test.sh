#!/usr/bin/env bash
# Installs the build under a fresh prefix, checks what lies there, builds the C host
# against the installed headers and pkg-config file, runs it on the installed module
# and content pack, then makes the Debian package and checks its contents.
#   install_test.sh BUILD_DIR SOURCE_DIR WORK_DIR
set -euo pipefail
build=$1 source=$2 work=$3
rm -rf "$work"
mkdir -p "$work"
prefix="$work/prefix"
cmake --install "$build" --prefix "$prefix" >/dev/null

pc=$(find "$prefix" -name qxdynamiceffects.pc)
[ -n "$pc" ] || { echo "no pkg-config file installed"; exit 1; }
export PKG_CONFIG_PATH=$(dirname "$pc")
module=$(pkg-config --variable=module qxdynamiceffects)
data=$(pkg-config --variable=datadir qxdynamiceffects)
libdir=$(pkg-config --variable=libdir qxdynamiceffects)
for path in "$module" "$data/Scenes/Misc/Cube.afx" "$prefix/bin/qxfx" "$prefix/include/qxdynamiceffects/QXCom.h" \
            "$prefix/lib/frei0r-1/qxfx.so" "$libdir/gstreamer-1.0/libgstqxfx.so"; do
  [ -e "$path" ] || { echo "not installed: $path"; exit 1; }
done

# A C compiler, nothing of the build but what was installed.
cc -std=c11 -Wall -Wextra -o "$work/host" "$source/ModuleHost.c" "$source/HostObjects.c" \
   $(pkg-config --cflags --libs qxdynamiceffects) -ldl
LD_LIBRARY_PATH="$libdir" "$work/host" "$module" "$data"

# Registration by hand, into a registry of this test's own.
export XDG_DATA_HOME="$work/home"
"$prefix/bin/qxregsvr" "$module" >/dev/null
grep -qF "@=\"$(realpath -s "$module")\"" "$XDG_DATA_HOME/qxcom/classes.reg" || { echo "qxregsvr wrote no server path"; exit 1; }
"$prefix/bin/qxregsvr" -u "$module" >/dev/null
! grep -q QXDynamicEffects "$XDG_DATA_HOME/qxcom/classes.reg" || { echo "qxregsvr -u left entries"; exit 1; }
! "$prefix/bin/qxregsvr" "$work/missing.so" 2>/dev/null || { echo "qxregsvr accepted a missing server"; exit 1; }

# The installed qxfx finds the installed content pack.
"$prefix/bin/qxfx" list >/dev/null

(cd "$work" && cpack --config "$build/CPackConfig.cmake" -B "$work/package" >/dev/null)
deb=$(find "$work/package" -maxdepth 1 -name '*.deb')
[ -n "$deb" ] || { echo "no Debian package"; exit 1; }
contents=$(dpkg-deb -c "$deb")
for name in libqxdynamiceffects.so.5 QXDynamicEffects.h qxdynamiceffects.pc frei0r-1/qxfx.so libgstqxfx.so bin/qxfx bin/qxregsvr \
            qxdynamiceffects/data/Scenes/Misc/Cube.afx; do
  grep -q "$name" <<<"$contents" || { echo "not in the package: $name"; exit 1; }
done
dpkg-deb -f "$deb" Depends | grep -q libc6 || { echo "the package names no dependencies"; exit 1; }
rm -rf "$work"
echo "installed, built against the installed pkg-config file, packed: $deb"
