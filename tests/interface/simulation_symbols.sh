# simulation_symbols.sh LIBRARY HEADER: the flat functions of the simulated master, as declared and as exported.
set -eu
export LC_ALL=C
declared=$(sed 's/(.*//' "$2" | tr ' *' '\n\n' | grep '^ethercat_simulation_[a-z_]*$' | grep -v '^ethercat_simulation_observer$' | sort -u)
exported=$(nm -D --defined-only "$1" | awk '{ sub(/@.*/, "", $3); print $3 }' | grep '^ethercat_simulation_' | sort)
[ "$(echo "$declared" | wc -l)" -gt 40 ] && [ "$declared" = "$exported" ] || {
  echo "declared: $declared
exported: $exported"
  exit 1
}
