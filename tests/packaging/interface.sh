# Programs built with an earlier build of this major version must run with this one: names, then types.
. "$(dirname "$0")/common.sh"
need dpkg-gensymbols abidiff
library=$BUILD/src/libigh_master.so

mkdir -p "$work/debian" "$work/tree/usr/lib"
printf 'Source: igh-master\n\nPackage: libigh-master1\nArchitecture: any\n' >"$work/debian/control"
cp "$library" "$work/tree/usr/lib/libigh_master.so.1"
# -c4: a name that is gone or new is an error.
(cd "$work" && dpkg-gensymbols -c4 -plibigh-master1 -v1.0.0 -I"$SOURCE/packaging/debian/libigh-master1.symbols" -Ptree -Onew) ||
  complain "the names are not those of packaging/debian/libigh-master1.symbols"

# Also what abidiff takes for harmless, such as a new enumerator. Without --headers-dir: it would pass over records.
abidiff --no-architecture --harmless "$SOURCE/packaging/abi/libigh_master.abi" "$library" ||
  complain "the interface is not that of packaging/abi/libigh_master.abi (record.sh beside it records a deliberate change)"
exit $failed
