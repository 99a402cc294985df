# The packages that cpack makes, unpacked into a fresh root.
. "$(dirname "$0")/common.sh"
need cpack dpkg-deb dpkg-shlibdeps dpkg-gensymbols file pkg-config

(cd "$BUILD" && cpack -G DEB -B "$work/debs" >"$work/log" 2>&1) || { cat "$work/log"; exit 1; }
root=$work/root
packages=(libigh-master1 libethercat-simulation1 libigh-master-dev igh-master-tools python3-igh-master libigh-master-sim1 libethercat-simulation-dev)
for package in "${packages[@]}"; do
  deb=$(echo "$work/debs/${package}"_*.deb)
  [ -f "$deb" ] || { complain "no package $package"; continue; }
  dpkg-deb -x "$deb" "$root"
  dpkg-deb --fsys-tarfile "$deb" | tar -t | grep -v '/$' >>"$work/files"
  depends=$(dpkg-deb -f "$deb" Depends)
  version=$(dpkg-deb -f "$deb" Version)
  [[ $version == *~simulated ]] || complain "$package does not say that it is simulated"
  case $package in
  libigh-master1 | libigh-master-sim1) wanted=("libethercat-simulation1 (= $version)" libxml2 libc6) ;;
  libethercat-simulation1) wanted=(libstdc++6 libc6) ;;
  libigh-master-dev) wanted=("libigh-master1 (= $version)" "libethercat-simulation-dev (= $version)") ;;
  libethercat-simulation-dev) wanted=("libethercat-simulation1 (= $version)" "libigh-master-sim1 (= $version)") ;;
  python3-igh-master) wanted=("libigh-master1 (= $version)" python3) ;;
  igh-master-tools) wanted=("libigh-master1 (= $version)" libncursesw6 libstdc++6) ;;
  esac
  for want in "${wanted[@]}"; do
    [[ ", $depends," == *", $want"[\ ,]* ]] || complain "$package depends on '$depends', not on $want"
  done
done
[ -z "$(sort "$work/files" | uniq -d)" ] || complain "in more than one package: $(sort "$work/files" | uniq -d)"
for package in libigh-master1 libethercat-simulation1; do
  dpkg-deb -e "$(echo "$work/debs/${package}"_*.deb)" "$work/control"
  library=$(echo "$root/usr/$LIBDIR/$(sed -n '1s/ .*//p' "$work/control/symbols").0.0")
  diff <(sed -n 's/^ \(.*\)@.*/\1/p' "$work/control/symbols" | sort) <(nm -D --defined-only "$library" | sed 's/.* //; s/@@.*//' | sort) ||
    complain "symbols of $package"
  grep -q ldconfig "$work/control/triggers" || complain "no trigger for ldconfig in $package"
  rm -r "$work/control"
done
[ -z "$(find "$root/usr/share/man" -type f ! -name '*.gz')" ] || complain "manual pages are not compressed"
zcat "$root"/usr/share/man/man3/igh_master_scan.3.gz | grep -q '^.so man3/igh_master_bus.3$' || complain "igh_master_scan(3)"

# /usr has no search path in its files: there the loader looks by itself.
library_path=$root/usr/$LIBDIR
export LD_LIBRARY_PATH=$library_path
finds_the_machine "$root/usr/bin/igh_bus"
consumers "$root/usr"

# Beside the real master's library, for which one stands that finds no bus: chosen when linking, or by the loader.
unset LD_LIBRARY_PATH
nm -D --defined-only "$library_path/libigh_master.so.1" | sed -n 's/.* T \(igh_master_[a-z_]*\)@.*/char \1(void) { return 0; }/p' >"$work/real.c"
"$CC" -shared -fPIC -w -Wl,-soname,libigh_master.so.1 -Wl,--version-script="$SOURCE/src/igh_master.map" "$work/real.c" -o "$library_path"/libigh_master.so.1.*
# shellcheck disable=SC2046
"$CC" -std=c99 "$SOURCE/examples/c/minimal.c" -o "$work/chosen" -Wl,-rpath-link,"$library_path" \
  $(PKG_CONFIG_PATH="$library_path/pkgconfig" pkg-config --cflags --libs igh_master_sim) || complain "pkg-config igh_master_sim"
"$CC" -std=c99 "$SOURCE/examples/c/minimal.c" -o "$work/usual" -I"$root/usr/include" -L"$library_path" -ligh_master || complain "plain flags beside the real master"
mkdir "$work/loader"
mv "$library_path"/libethercat_simulation.so* "$work/loader"
library_path=$work/loader
runs_the_machine "$work/chosen"
library_path=$root/usr/$LIBDIR
(runs_the_machine "$work/usual"; exit "$failed") >/dev/null && complain "the real master's library was not there"
library_path=$root/usr/$LIBDIR/igh-master-sim:$work/loader
runs_the_machine "$work/usual"

# Compilers cut texts into pieces; lintian takes what ends one and begins the next for misspelt words. A build that is not
# for /usr has no folder of the architecture, where pkg-config looks for another machine's files.
not_meant=spelling-error-in-binary
[[ $LIBDIR == */* ]] || not_meant+=,pkg-config-unavailable-for-cross-compilation
if command -v lintian >/dev/null; then
  lintian --display-info --fail-on error,warning,info --suppress-tags "$not_meant" "$work/debs"/*.deb 2>&1 || complain "lintian objects"
else
  echo "lintian is not installed: not run"
fi
exit $failed
