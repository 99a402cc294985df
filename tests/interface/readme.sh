# readme.sh README FILE: the README's first C block is this file, character for character.
set -eu
awk '/^```c$/ { inside = 1; next } /^```$/ && inside { exit } inside' "$1" | diff - "$2"
