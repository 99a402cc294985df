#!/usr/bin/env bash
# variants.sh SOURCE_DIR WORK_DIR RELEASE: builds the library against a generated release of the IgH master; all programs
# with the patched one.
# RELEASE mixed: header and library of two releases, and an empty prefix; both must be refused in plain words.
set -euo pipefail
source=$1 work=$2/$3 release=$3
rm -rf "$work"
mkdir -p "$work"
make_release() { python3 "$source/tests/platform/release.py" "$1" "$source/simulation/include/ecrt.h" "$work/$1"; }
configure() { # prefix, then options
  cmake -G Ninja -S "$source" -B "$work/build" -DETHERCAT_ROOT="$1" -DCMAKE_BUILD_TYPE=None "${@:2}" 2>&1
}
refused() { # words that must be in the message, then as configure
  local words=$1
  shift
  if said=$(configure "$@"); then echo "was not refused: $*"; exit 1; fi
  tr -s '\n ' ' ' <<<"$said" | grep -qF "$words" || { echo "$said"; exit 1; }
}

if [ "$release" = mixed ]; then
  make_release patched
  make_release 1.6
  refused "IgH EtherCAT Master was not found" "$work/nothing" -DIGH_MASTER_PLATFORM=ethercat
  rm -rf "$work/build"
  cp -P "$work/1.6/lib/"* "$work/patched/lib/"
  refused "are of two releases (library 0x106, header 0x1050A)" "$work/patched" -DIGH_MASTER_PLATFORM=ethercat
  rm -rf "$work/build"
  refused "xeno-config was not found" "$work/1.6" -DIGH_MASTER_PLATFORM=ethercat_rtdm -DXENO_CONFIG=XENO_CONFIG-NOTFOUND
  exit
fi

platform=ethercat
make_release "$release"
if [ "$release" = patched ]; then # also as the real-time variant, with a xeno-config that gives one flag of each kind
  platform=ethercat_rtdm
  printf '#!/bin/sh\ncase "$*" in *cflags*) echo -D__COBALT__ ;; *) echo -Wl,--as-needed ;; esac\n' >"$work/xeno-config"
  chmod +x "$work/xeno-config"
fi
said=$(configure "$work/$release" -DIGH_MASTER_PLATFORM=$platform -DXENO_CONFIG="$work/xeno-config" -DIGH_MASTER_WERROR=ON)
lacks=$(grep -c "this release lacks complete access" <<<"$said" || true)
[ "$lacks" -eq "$([ "$release" = patched ] && echo 0 || echo 1)" ] || { echo "$said"; exit 1; }
target=igh_master
[ "$release" != patched ] || target=all
cmake --build "$work/build" --target $target 2>&1 | tail -n 30
needed=$(objdump -p "$work/build/src/libigh_master.so")
grep -q "NEEDED.*lib$platform.so.1" <<<"$needed"
! grep -q "simulation" <<<"$needed"
complete=$(nm -D --undefined-only "$work/build/src/libigh_master.so" | grep -c create_sdo_request_complete || true)
[ "$complete" -eq $((1 - lacks)) ]
[ "$release" = patched ] || exit 0
# The stub knows no master: the program says so and ends in order.
status=0
"$work/build/tools/igh_bus/igh_bus" scan --eni "$source/examples/machine/coupler.xml" 2>"$work/err" || status=$?
[ "$status" -eq 3 ] && grep -q "cannot be reserved" "$work/err"
