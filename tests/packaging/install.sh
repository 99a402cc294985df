# An installed prefix, moved away from where it was installed, and a fresh root.
. "$(dirname "$0")/common.sh"
need pkg-config readelf
configured=$(sed -n 's/^CMAKE_INSTALL_PREFIX:PATH=//p' "$BUILD/CMakeCache.txt")
[ "$configured" != /usr ] || { echo "skipped: built for /usr, which has no search path"; exit 77; }

"$CMAKE" --install "$BUILD" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/a moved one"
ln -s "$work/a moved one" "$work/moved" # compilers and pkg-config quote badly
prefix=$work/moved
consumers "$prefix"

finds_the_machine "$prefix/$BINDIR/igh_bus"
[ ! -e "$prefix/include/ecrt.h" ] || complain "the simulation's ecrt.h shadows the real master's"
if grep -rIlF -e "$work/first" -e "$BUILD" -e "$SOURCE/" "$prefix/"; then
  complain "these files name the place where they were built or installed"
fi
for file in "$prefix/$BINDIR"/* "$prefix/$LIBDIR"/*.so; do
  readelf -d "$file" | sed -n 's/.*RUNPATH.*\[\(.*\)\]/\1/p' | tr : '\n' | grep -v '^\$ORIGIN' && complain "$file searches there"
done

# A fresh root: everything is below it, and works from there as it would after chroot or copying.
DESTDIR=$work/root "$CMAKE" --install "$BUILD" >/dev/null
consumers "$work/root$configured"
difference=$(diff <(cd "$prefix/" && find . | sort) <(cd "$work/root$configured" && find . | sort)) ||
  complain "the root does not hold what the prefix holds: $difference"
exit $failed
