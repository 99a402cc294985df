# Sourced by the scripts: the Debian packages that the project needs, and how to get those that are missing.

build_packages=(g++ cmake ninja-build pkg-config libxml2-dev libcli11-dev nlohmann-json3-dev python3)
test_packages=(libgtest-dev libgmock-dev libbenchmark-dev chromium python3-pytest python3-pip python3-setuptools python3-wheel)
package_packages=(abigail-tools dpkg-dev file lintian man-db)
check_packages=(clang clang-format clang-tidy)
fuzz_packages=(clang libclang-rt-14-dev llvm)
coverage_packages=(gcovr)

fail() {
  echo "${0##*/}: $*" >&2
  exit 1
}

missing_packages() {
  local package
  for package in "$@"; do
    if [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
      echo "$package"
    fi
  done
}

# Installs what is missing of the packages named; touches neither apt nor the network when nothing is.
install_missing() {
  command -v dpkg-query >/dev/null || fail "this is no Debian system; install the equivalents of: $*"
  local missing
  mapfile -t missing < <(missing_packages "$@")
  [ "${#missing[@]}" -gt 0 ] || return 0

  local as_root=(env DEBIAN_FRONTEND=noninteractive)
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || fail "not root and no sudo; as root: apt-get install ${missing[*]}"
    as_root=(sudo "${as_root[@]}")
  fi
  local install=("${as_root[@]}" apt-get -qq -y -o DPkg::Lock::Timeout=120 install --no-install-recommends "${missing[@]}")
  local log
  log=$(mktemp)
  echo "Installing ${missing[*]}"
  # Package lists may be absent or out of date: they are fetched only when the installation fails with those at hand.
  if ! "${install[@]}" >"$log" 2>&1 </dev/null; then
    { "${as_root[@]}" apt-get -qq -o DPkg::Lock::Timeout=120 update && "${install[@]}"; } >"$log" 2>&1 </dev/null ||
      fail "could not install ${missing[*]} (is the network reachable?); apt-get's own words are in $log"
  fi
  rm -f "$log"
}
