# record.sh LIBRARY HEADER-FOLDER: prints the binary interface as abidiff reads it, with nothing of this machine in it.
# After a deliberate change:  sh packaging/abi/record.sh build/release/src/libigh_master.so include > packaging/abi/libigh_master.abi
set -eu
abidw --headers-dir "$2" --exported-interfaces-only --drop-private-types --no-corpus-path --no-comp-dir-path --no-show-locs \
  --no-elf-needed --no-architecture --no-parameter-names --no-write-default-sizes --type-id-style hash "$1" |
  sed "s|path='[^']*/|path='|"
