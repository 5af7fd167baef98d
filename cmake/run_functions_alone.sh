#!/bin/sh
# Runs a Qt Test program once per test function, each in a process of its own, then once with
# all its functions in reverse order: a function that only passes after another one has set
# something up (or fails after another one left something behind) is named here.
# Usage: run_functions_alone.sh <test program>
set -u
program=$1
functions=$("$program" -functions) || {
    echo "cannot list the functions of $program"
    exit 1
}
functions=$(printf '%s\n' "$functions" | sed -n 's/^\([A-Za-z_][A-Za-z0-9_]*\)()$/\1/p')
log=$(mktemp)
trap 'rm -f "$log"' EXIT
failed=""
reversed=""
for f in $functions; do
    reversed="$f $reversed"
    if ! "$program" "$f" -silent >"$log" 2>&1; then
        cat "$log"
        failed="$failed $f"
    fi
done
if [ -n "$reversed" ] && ! "$program" $reversed -silent >"$log" 2>&1; then
    cat "$log"
    failed="$failed (reverse order)"
fi
if [ -n "$failed" ]; then
    echo "FAILED when run alone:$failed"
    exit 1
fi
echo "every function passes alone: $(printf '%s\n' $functions | wc -l) functions"
