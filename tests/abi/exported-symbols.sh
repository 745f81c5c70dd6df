#!/usr/bin/env bash
# exported-symbols.sh LIBRARY LIST [--update]
#
# Compares the functions and objects the shared library defines for its
# users with the committed LIST, so that the public ABI changes only on
# purpose. Only strong definitions count: inline functions and template
# instantiations are weak, and which of them a compiler emits depends on
# the compiler and its optimisation, not on our interface. Virtual tables
# and type information follow from the classes' virtual functions, and one
# compiler makes them weak where another makes them strong: left out too.
# With --update, LIST
# is rewritten from LIBRARY instead (commit it with the change that
# meant to alter the interface).
set -euo pipefail
library=$1
list=$2

exported() {
	nm -D --defined-only "$library" | awk '$2 ~ /^[TDBR]$/ { print $3 }' | c++filt |
		grep -Ev '^(vtable|typeinfo|typeinfo name|VTT|construction vtable) for ' | LC_ALL=C sort -u
}

if [ "${3:-}" = "--update" ]; then
	exported >"$list"
	echo "wrote $(wc -l <"$list") symbols to $list"
	exit 0
fi

if ! diff -u "$list" <(exported) >/tmp/exported-symbols.$$.diff; then
	echo "The library's exported symbols differ from $list ('-' gone, '+' new):"
	grep -E '^[-+][^-+]' /tmp/exported-symbols.$$.diff
	rm -f /tmp/exported-symbols.$$.diff
	echo "If the change is meant, run: bash tests/abi/exported-symbols.sh $library $list --update"
	exit 1
fi
rm -f /tmp/exported-symbols.$$.diff
