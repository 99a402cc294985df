# Every function, option and key that the code knows stands in its manual page.
. "$(dirname "$0")/common.sh"
need nm grep
manual=$BUILD/packaging/man
igh_bus=$BUILD/tools/igh_bus/igh_bus
[ -e "$manual/man3/igh_master.3" ] || { echo "skipped: built without Python 3"; exit 77; }

plain() { sed 's/\\f[BIR]//g; s/\\-/-/g' "$1" >"$2"; }
# in_page PAGE WORD WHERE
in_page() { grep -qwF -- "$2" "$1" || complain "$2 ($3) is missing in $1"; }

plain "$manual/man3/igh_master.3" "$work/whole"
functions=$(nm -D --defined-only "$BUILD/src/libigh_master.so" | sed -n 's/.* T \(igh_master_[a-z_]*\).*/\1/p')
[ "$(wc -l <<<"$functions")" -eq 48 ] || complain "the library exports $(wc -l <<<"$functions") functions"
for name in $functions; do
  group=$(sed -n 's/^\.so man3\/\(igh_master_[a-z_]*\)\.3$/\1/p' "$manual/man3/$name.3") || complain "no page $name(3)"
  in_page "$work/whole" "$group(3)" "the group of $name"
  in_page "$work/whole" "$name" "function"
  plain "$manual/man3/$group.3" "$work/group"
  grep -qE "^(\\\\&)?[A-Za-z0-9_ ]+ \*?$name\(" "$work/group" || complain "no prototype of $name in $group(3)"
done

# help_words SECTION COMMAND...: subcommands or options as the help lists them.
plain "$manual/igh_bus.1" "$work/program"
check_command() {
  local help word found=0
  help=$("$igh_bus" "$@" --help)
  for word in $(grep -oE '^  (-[a-z],)?--[a-z-]+' <<<"$help" | sed 's/.*--/--/'); do
    found=1
    in_page "$work/program" "$word" "igh_bus $*"
  done
  [ "$found" = 1 ] || complain "no option in the help of igh_bus $*"
  for word in $(sed -n '/^Subcommands:/,/^$/s/^  \([a-z]\+\) .*/\1/p' <<<"$help"); do
    in_page "$work/program" "${*:+$* }$word" "command"
    check_command "$@" "$word"
  done
}
check_command

plain "$manual/bus-file.5" "$work/keys"
keys=$(cat "$SOURCE"/simulation/src/busfile/*.cpp | tr '\n' ' ' | grep -oP 'expectObject\(\{[^}]*\}' | grep -oP '"\K[a-z_]+(?=")' | sort -u)
[ "$(wc -w <<<"$keys")" -gt 20 ] || complain "found too few keys in the source: $keys"
for key in $keys; do
  in_page "$work/keys" "$key" "bus file"
done

if command -v man >/dev/null; then
  for page in $(grep -L '^\.so' "$manual"/man3/*) "$manual"/igh_bus.1 "$manual"/bus-file.5; do
    warnings=$(MANWIDTH=160 man --warnings -E UTF-8 -l "$page" 2>&1 >/dev/null) || true
    [ -z "$warnings" ] || complain "$page: $warnings"
  done
fi
exit $failed
