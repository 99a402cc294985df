# What bash offers, asked as bash asks.
. "$(dirname "$0")/common.sh"
. "$SOURCE/packaging/completion/igh_bus"
igh_bus=$BUILD/tools/igh_bus/igh_bus

# offers "WORDS" "OFFER...": the last of WORDS is the one being typed, "" for none yet
offers() {
  local wanted=$1
  shift
  COMP_WORDS=("$igh_bus" "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  _igh_bus || true # its result means nothing to bash
  local got
  got=$(printf '%s\n' "${COMPREPLY[@]-}" | sort | tr '\n' ' ')
  [ "$got" = "$wanted " ] || complain "igh_bus $* offers '$got', not '$wanted'"
}

touch "$work/a.xml" "$work/b.json" "$work/c.txt" "$work/d.csv"
mkdir "$work/folder"
cd "$work"
offers "reg run" r
offers "list read write" sdo ""
offers "SAFEOP" states 0 S
offers "write" reg w
offers "--seconds --set --strict --sync-to-reference" run --s
offers "--verbose" scan --v
offers "--watch" watch --w
offers "--clear" errors --cl
offers "--bus --clear --eni --help --interval --master --watch" errors --watch ""
offers "" run --watch ""
offers "--climb-limit --clock-bound --clock-cycles" check --cl
offers "c.txt" check --report c
offers "--complete --count" sdo read 0 0x6041 --co
offers "a.xml folder" scan --eni ""
offers "a.xml folder" run --period 2ms --eni a.xml ""
offers "a.xml folder" describe ""
offers "b.json folder" scan --eni a.xml --bus ""
offers "folder" run --report ""
offers "d.csv folder" run --record ""
offers "folder" doctor --root ""
offers "--output" adapt --eni a.xml --ou
offers "a.xml folder" adapt --eni a.xml -o ""
offers "any" adapt --revision an
offers "UDINT UINT ULINT USINT" sdo read 0 0x6041 --type U
offers "" run --cycles ""
offers "" nonsense ""
exit $failed
