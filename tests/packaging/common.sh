# Sourced by the tests of this folder. Every check names what it misses; a test that complained has failed.
set -euo pipefail
export LC_ALL=C
here=$SOURCE/tests/packaging
machine=$SOURCE/examples/machine
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

complain() {
  echo "failed: $*"
  failed=1
}

# Skips the test where a tool of the platform is missing.
need() {
  local tool
  for tool in "$@"; do
    command -v "$tool" >/dev/null || { echo "skipped: $tool is not installed"; exit 77; }
  done
}

# The example program, or one like it, moves the drive of the simulated machine and ends in OP.
runs_the_machine() {
  local output
  output=$(env -u LD_LIBRARY_PATH ${library_path:+LD_LIBRARY_PATH="$library_path"} \
    ETHERCAT_SIMULATION_BUS="$machine/machine.json" "$1" "$machine/servo_drive.xml" 2>&1) || complain "$1 gave: $output"
  [[ $output == *"Position actual value: 1"* && $output == *"AL state: 8"* ]] || complain "$1 printed: $output"
}

# finds_the_machine PROGRAM: igh_bus lists the slaves of the simulated machine.
finds_the_machine() {
  local output
  output=$("$1" scan --eni "$machine"/*.xml --bus "$machine/machine.json" 2>&1) || complain "$1 gave a failure"
  [[ $output == *"7  0:7  PREOP  +  EM200 digital input"* ]] || complain "$1 printed: $output"
}

# consumers PREFIX: programs built with the CMake package, with pkg-config and with plain flags, then run side by side.
consumers() {
  local prefix=$1 built pids=() pid
  built=$(mktemp -d "$work/consumers.XXXX")
  "$CMAKE" -S "$here/consumer" -B "$built/cmake" -DCMAKE_PREFIX_PATH="$prefix" -DSOURCE="$SOURCE" -DCMAKE_BUILD_TYPE=Debug \
    >"$built/log" 2>&1 && "$CMAKE" --build "$built/cmake" >>"$built/log" 2>&1 || { cat "$built/log"; complain "CMake consumer of $prefix"; return; }
  "$CC" -std=c99 "$SOURCE/examples/c/minimal.c" -o "$built/plain" \
    -I"$prefix/include" -L"$prefix/$LIBDIR" -ligh_master -Wl,-rpath,"$prefix/$LIBDIR" || complain "plain flags for $prefix"
  # Word splitting is what pkg-config's output is for.
  # shellcheck disable=SC2046
  "$CC" -std=c99 "$SOURCE/examples/c/minimal.c" -o "$built/pkg-config" -Wl,-rpath,"$prefix/$LIBDIR" \
    $(PKG_CONFIG_PATH="$prefix/$LIBDIR/pkgconfig" pkg-config --cflags --libs igh_master) || complain "pkg-config for $prefix"

  local program
  export PYTHONPATH=$prefix/lib/python3/dist-packages
  for program in "$built/cmake/minimal" "$built/plain" "$built/pkg-config" "$SOURCE/examples/python/run_machine.py"; do
    (runs_the_machine "$program"; exit "$failed") &
    pids+=($!)
  done
  for program in own_test beside_test; do
    "$built/cmake/$program" || complain "a consumer's $program on the simulated bus"
  done
  "$built/cmake/quick_stop_test" "$machine/motion.json" "$machine/motion_drive.xml" >/dev/null 2>&1 || complain "the same in C"
  for pid in "${pids[@]}"; do
    wait "$pid" || failed=1
  done
}
