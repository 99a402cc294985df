#!/usr/bin/env bash
# variants.sh SOURCE_DIR WORK_DIR RELEASE: builds the library against a generated release of the IgH master; all programs
# with the patched one.
# RELEASE search: what configure finds and what it refuses, in which words; nothing is built.
set -euo pipefail
source=$1 work=$2/$3 release=$3
if command -v ccache >/dev/null; then ccache=-DCMAKE_CXX_COMPILER_LAUNCHER=ccache; else ccache=; fi
rm -rf "$work"
mkdir -p "$work"
fail() { printf '%s\n' "$@"; exit 1; }
make_release() { python3 "$source/tests/platform/release.py" "$1" "$source/simulation/include/ecrt.h" "$work/$1"; }
configure() { # prefix, then options
  cmake -G Ninja -S "$source" -B "$work/build" -DETHERCAT_ROOT="$1" -DCMAKE_BUILD_TYPE=None ${ccache:+"$ccache"} "${@:2}" 2>&1
}
expect() { grep -qF -- "$1" <<<"$2" || fail "missing: $1" "$2"; }
expect_not() { if grep -qF -- "$1" <<<"$2"; then fail "not wanted: $1" "$2"; fi; }
refused() { # words that must be in the message, then as configure
  if said=$(configure "${@:2}"); then fail "was not refused: $*"; fi
  expect "$1" "$(tr -s '\n ' ' ' <<<"$said")"
}
accepted() {
  said=$(configure "${@:2}") || fail "was refused: $*" "$said"
  expect "$1" "$said"
}

if [ "$release" = search ]; then
  make_release patched
  make_release 1.5.2
  make_release 1.6
  refused "IgH EtherCAT Master was not found" "$work/nothing" -DIGH_MASTER_PLATFORM=ethercat
  # Header and library of two releases; then the remedy of the message, in the same build folder.
  cp -r "$work/patched" "$work/mixed"
  cp -P "$work/1.6/lib/"* "$work/mixed/lib/"
  refused "are of two releases (library 0x106, header 0x1050A); set ETHERCAT_ROOT" "$work/mixed"
  accepted "this release lacks complete access" "$work/1.5.2"
  # One release installed over another.
  cp "$work/patched/include/"* "$work/1.5.2/include/"
  refused "(library 0x105, header 0x1050A)" "$work/1.5.2"
  cp -P "$work/patched/lib/"* "$work/1.5.2/lib/"
  accepted "$work/1.5.2/lib/libethercat.so" "$work/1.5.2"
  expect_not "lacks" "$said"
  # A library that ends every program, as one for Cobalt does on a machine without it, is no mismatch.
  cp -r "$work/1.6" "$work/ending"
  printf '#include <stdlib.h>\n__attribute__((constructor)) static void end(void) { _Exit(1); }\n' >>"$work/ending/stubs.c"
  cc -shared -fPIC -w -I"$work/1.6/include" "$work/ending/stubs.c" -o "$work/ending/lib/libethercat.so.1"
  accepted "does not run here, the library's release is not compared" "$work/ending"
  printf '' >"$work/ending/lib/libethercat.so.1"
  refused "does not link with $work/ending/lib/libethercat.so" "$work/ending"
  refused "xeno-config was not found" "$work/1.6" -DIGH_MASTER_PLATFORM=ethercat_rtdm -DXENO_CONFIG=XENO_CONFIG-NOTFOUND
  # By what stock releases ship: the CMake package comes before pkg-config.
  package=$work/1.6/lib/cmake/ethercat
  mkdir -p "$package"
  printf 'add_library(EtherLab::ethercat SHARED IMPORTED)\nset_target_properties(EtherLab::ethercat PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "%s")\n' \
    "$work/1.6/include" >"$package/ethercat-config.cmake"
  printf 'Name: libethercat\nDescription: x\nVersion: 1\nCflags: -I%s/include\nLibs: -L%s/lib -lethercat\n' "$work/patched" "$work/patched" >"$work/libethercat.pc"
  export PKG_CONFIG_PATH=$work
  accepted "IgH EtherCAT Master, $work/patched/lib" "" -DIGH_MASTER_PLATFORM=ethercat
  rm -rf "$work/build"
  accepted "IgH EtherCAT Master, $work/1.6/lib" "" -DIGH_MASTER_PLATFORM=ethercat -Dethercat_DIR="$package"
  exit
fi

platform=ethercat
make_release "$release"
if [ "$release" = patched ]; then # also as the real-time variant, with a xeno-config that gives one flag of each kind
  platform=ethercat_rtdm
  cat >"$work/xeno-config" <<'END'
#!/bin/sh
case "$*" in
  *--cflags*) echo -D__COBALT__ ;;
  *rtdm*--auto-init-solib*) echo -Wl,--defsym=xeno_library=0 ;;
  *posix*) echo -Wl,--defsym=xeno_program=0 ;;
esac
END
  chmod +x "$work/xeno-config"
fi
accepted "IgH EtherCAT Master, $work/$release/lib/lib$platform.so" "$work/$release" \
  -DIGH_MASTER_PLATFORM=$platform -DXENO_CONFIG="$work/xeno-config" -DIGH_MASTER_WERROR=ON
target=igh_master
case $release in
  patched) magic=0x1050a target=all && expect_not "lacks" "$said" ;;
  1.5.2) magic=0x105 && expect "this release lacks complete access" "$said" ;;
  1.6) magic=0x106 && expect "this release lacks complete access" "$said" ;;
esac
made=$(cmake --build "$work/build" --target $target 2>&1) || fail "$made"
library=$work/build/src/libigh_master.so
needed=$(objdump -p "$library")
expect "lib$platform.so.1" "$needed"
expect_not "simulation" "$needed"
# Every symbol is there when the library is loaded, and the master that comes with it is of this release.
seen=$(python3 -c 'import ctypes, os, sys; print(hex(ctypes.CDLL(sys.argv[1], os.RTLD_NOW).ecrt_version_magic()))' "$library")
[ "$seen" = "$magic" ] || fail "version word $seen"
undefined=$(nm -D --undefined-only "$library")
if [ "$release" != patched ]; then
  expect_not create_sdo_request_complete "$undefined"
  expect ecrt_master_get_slave "$undefined"
  exit
fi
expect create_sdo_request_complete "$undefined"
# The flags of a library in the library, those of a program in the program.
symbols=$(nm "$work/build/tools/igh_bus/igh_bus")
expect xeno_library "$(nm "$library")"
expect xeno_program "$symbols"
expect_not xeno_library "$symbols"
# The stub knows no master: the program says so and ends in order.
status=0
"$work/build/tools/igh_bus/igh_bus" scan 2>"$work/err" || status=$?
[ "$status" -eq 3 ] && expect "cannot be opened" "$(<"$work/err")"
