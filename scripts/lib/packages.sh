# Sourced by the scripts: the Debian packages that the project needs, and how to get those that are missing.

build_packages=(g++ cmake ninja-build pkg-config libxml2-dev libcli11-dev nlohmann-json3-dev libncurses-dev python3)
test_packages=(libgtest-dev libgmock-dev libbenchmark-dev chromium poppler-utils python3-pytest python3-pip python3-setuptools python3-wheel)
package_packages=(abigail-tools dpkg-dev file lintian man-db)
check_packages=(clang clang-format clang-tidy)
fuzz_packages=(clang libclang-rt-14-dev llvm)
coverage_packages=(gcovr)
# The fewest of the other architecture: what they share with this machine's packages must be of one version, so apt brings
# those up to date as well.
aarch64_packages=(g++-aarch64-linux-gnu qemu-user libxml2-dev:arm64 libncurses-dev:arm64 libgtest-dev:arm64 libgmock-dev:arm64)

fail() {
  echo "${0##*/}: $*" >&2
  exit 1
}

missing_packages() {
  local package architecture native
  native=$(dpkg --print-architecture)
  for package in "$@"; do
    # A name alone means every architecture to dpkg-query, and this machine's to apt.
    architecture=$native
    [[ $package != *:* ]] || architecture=${package#*:}
    dpkg-query -W -f '${Architecture} ${db:Status-Status}\n' "$package" 2>/dev/null | grep -qxE "($architecture|all) installed" ||
      echo "$package"
  done
}

# as_root COMMAND...: as root, by sudo where that is needed.
as_root() {
  local by=(env DEBIAN_FRONTEND=noninteractive)
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || fail "not root and no sudo; as root: $*"
    by=(sudo "${by[@]}")
  fi
  "${by[@]}" "$@"
}

# Installs what is missing of the packages named; touches neither apt nor the network when nothing is.
install_missing() {
  command -v dpkg-query >/dev/null || fail "this is no Debian system; install the equivalents of: $*"
  local missing
  mapfile -t missing < <(missing_packages "$@")
  [ "${#missing[@]}" -gt 0 ] || return 0

  local install=(as_root apt-get -qq -y -o DPkg::Lock::Timeout=120 install --no-install-recommends "${missing[@]}")
  local log
  log=$(mktemp)
  echo "Installing ${missing[*]}"
  # Package lists may be absent or out of date: they are fetched only when the installation fails with those at hand.
  if ! "${install[@]}" >"$log" 2>&1 </dev/null; then
    { as_root apt-get -qq -o DPkg::Lock::Timeout=120 update && "${install[@]}"; } >"$log" 2>&1 </dev/null ||
      fail "could not install ${missing[*]} (is the network reachable?); apt-get's own words are in $log"
  fi
  rm -f "$log"
}
