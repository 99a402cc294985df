# The packages that cpack makes, unpacked into a fresh root.
. "$(dirname "$0")/common.sh"
need cpack dpkg-deb dpkg-shlibdeps file pkg-config

(cd "$BUILD" && cpack -G DEB -B "$work/debs" >"$work/log" 2>&1) || { cat "$work/log"; exit 1; }
root=$work/root
for package in libigh-master1 libethercat-simulation1 libigh-master-dev igh-master-tools python3-igh-master; do
  deb=$(echo "$work/debs/${package}"_*.deb)
  [ -f "$deb" ] || { complain "no package $package"; continue; }
  dpkg-deb -x "$deb" "$root"
  depends=$(dpkg-deb -f "$deb" Depends)
  version=$(dpkg-deb -f "$deb" Version)
  [[ $version == *~simulated ]] || complain "$package does not say that it is simulated"
  case $package in
  libigh-master1) wanted=("libethercat-simulation1 (= $version)" libxml2 libc6) ;;
  libethercat-simulation1) wanted=(libstdc++6 libc6) ;;
  libigh-master-dev) wanted=("libigh-master1 (= $version)" "libethercat-simulation1 (= $version)") ;;
  python3-igh-master) wanted=("libigh-master1 (= $version)" python3) ;;
  igh-master-tools) wanted=("libigh-master1 (= $version)" libstdc++6) ;;
  esac
  for want in "${wanted[@]}"; do
    [[ ", $depends," == *", $want"[\ ,]* ]] || complain "$package depends on '$depends', not on $want"
  done
done
dpkg-deb -I "$work/debs"/libigh-master1_*.deb symbols | cmp - "$SOURCE/packaging/debian/symbols" || complain "symbols of the package"
dpkg-deb -I "$work/debs"/libigh-master1_*.deb triggers | grep -q ldconfig || complain "no trigger for ldconfig"
[ -z "$(find "$root/usr/share/man" -type f ! -name '*.gz')" ] || complain "manual pages are not compressed"
zcat "$root"/usr/share/man/man3/igh_master_scan.3.gz | grep -q '^.so man3/igh_master.3$' || complain "igh_master_scan(3)"

# /usr has no search path in its files: there the loader looks by itself.
library_path=$root/usr/$LIBDIR
export LD_LIBRARY_PATH=$library_path
finds_the_machine "$root/usr/bin/igh_bus"
consumers "$root/usr"

if command -v lintian >/dev/null; then
  lintian --fail-on error "$work/debs"/*.deb 2>&1 || complain "lintian found errors"
else
  echo "lintian is not installed: not run"
fi
exit $failed
