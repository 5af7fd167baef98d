#!/bin/sh
# Times ussctl export and import against raw baselines measured in the same run and prints
# the ratios and the peak memory of ussctl.
#
#   run.sh [--bin DIR] [--work DIR] [--elements N] [--attributes A] [--files F]
#          [--sizes "KIB KIB ..."] [--scales "S S ..."] [--keep]
#
# Defaults: 10000 elements, 40 attributes, 2000 distinct files, sizes "64 256" (KiB); the
# timings and ratios are taken on the last size, the peak memory is shown for each size.
# Export baseline: Info-ZIP zip of the same distinct files plus a JSON file as large as the
# exported document, at the same compression level (6, zlib's default that libzip uses).
# Import baseline: unzip of the same archive plus the sqlite3 shell loading the same number
# of attribute values in one transaction.
# Import memory as the document grows: the peak memory of ussctl import of archives of 1, 2
# and 4 times the elements (--scales "2 4" by default; "" skips it), each of 4 KiB files so
# that only the document and the records grow; the dry run beside it shows the reading and
# deciding alone, without what the catalog holds of the elements written.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
bin="$here/../../build/bin"
work=""
elements=10000
attributes=40
files=2000
sizes="64 256"
scales="2 4"
keep=0
while [ $# -gt 0 ]; do
    case "$1" in
    --bin) bin=$2; shift 2 ;;
    --work) work=$2; shift 2 ;;
    --elements) elements=$2; shift 2 ;;
    --attributes) attributes=$2; shift 2 ;;
    --files) files=$2; shift 2 ;;
    --sizes) sizes=$2; shift 2 ;;
    --scales) scales=$2; shift 2 ;;
    --keep) keep=1; shift ;;
    -h|--help) sed -n '2,17p' "$0"; exit 0 ;;
    *) echo "run.sh: unknown argument $1" >&2; exit 2 ;;
    esac
done

ussctl="$bin/ussctl"
[ -x "$ussctl" ] || { echo "run.sh: no ussctl at $ussctl (build target ussctl first)" >&2; exit 2; }
for tool in zip unzip sqlite3; do
    command -v $tool >/dev/null || { echo "run.sh: $tool is not installed" >&2; exit 2; }
done
timer=""
[ -x /usr/bin/time ] && timer=/usr/bin/time

if [ -z "$work" ]; then
    work=$(mktemp -d "${TMPDIR:-/tmp}/bench_exchange.XXXXXX")
else
    mkdir -p "$work"
fi
# ussctl's working folders live in a temporary folder of this run, away from exports that
# other programs may be running on the same machine at the same time.
mkdir -p "$work/tmp"
export TMPDIR="$work/tmp"
cleanup() { [ "$keep" = 1 ] || rm -rf "$work"; }
trap cleanup EXIT

now() { date +%s%N; }
# seconds between two nanosecond stamps, three decimals
span() { echo "$1 $2" | awk '{ printf "%.3f", ($2 - $1) / 1e9 }'; }
ratio() { echo "$1 $2" | awk '{ if ($2 > 0) printf "%.2f", $1 / $2; else print "inf" }'; }

# Runs a command, leaving its wall time in $took (seconds) and its peak memory in $peak (MiB,
# "n/a" without /usr/bin/time); ussctl may also report its own with --peak-memory.
measure() {
    start=$(now)
    if [ -n "$timer" ]; then
        $timer -f '%M' -o "$work/rss.txt" "$@" >"$work/command.log" 2>&1 ||
            { cat "$work/command.log" >&2; exit 1; }
        peak=$(awk 'END { printf "%.1f", $1 / 1024 }' "$work/rss.txt")
    else
        "$@" >"$work/command.log" 2>&1 || { cat "$work/command.log" >&2; exit 1; }
        peak="n/a"
    fi
    took=$(span "$start" "$(now)")
}

echo "bench_exchange: $elements elements, $attributes attributes, $files distinct files, sizes ${sizes} KiB"
echo "work folder: $work"

for size in $sizes; do
    catalog="$work/source_$size.db"
    archive="$work/export_$size.uss"
    rm -rf "$catalog" "$catalog.files" "$catalog-wal" "$catalog-shm" "$archive"
    start=$(now)
    "$ussctl" generate --kind tx --elements "$elements" --attributes "$attributes" \
        --files "$files" --file-size "$size" --seed 1 "$catalog" >/dev/null
    echo "[$size KiB] generated catalog in $(span "$start" "$(now)") s"

    measure "$ussctl" export "$catalog" "$archive"
    export_time=$took
    export_peak=$peak
    echo "[$size KiB] ussctl export: $export_time s, peak memory $export_peak MiB," \
         "archive $(($(stat -c %s "$archive") / 1048576)) MiB"
    last_size=$size
done

# --- (a) export against zip, on the last size -----------------------------------------------
size=$last_size
catalog="$work/source_$size.db"
archive="$work/export_$size.uss"
base="$work/baseline"
rm -rf "$base"
mkdir -p "$base"
# The document as large as ussctl wrote it: the document itself, taken out of the archive.
unzip -p "$archive" TX.json >"$base/TX.json"
zipped="$work/baseline.zip"
rm -f "$zipped"
start=$(now)
(cd "$catalog.files" && zip -q -6 -r "$zipped" . && cd "$base" && zip -q -6 "$zipped" TX.json)
zip_time=$(span "$start" "$(now)")
echo "zip baseline: $zip_time s (distinct files of $catalog.files + document of $(stat -c %s "$base/TX.json") bytes)"
export_ratio=$(ratio "$export_time" "$zip_time")

# --- (b) import against unzip + sqlite3 -----------------------------------------------------
target="$work/target.db"
rm -rf "$target" "$target.files" "$target-wal" "$target-shm"
"$ussctl" create --kind tx "$target" >/dev/null
measure "$ussctl" import "$target" "$archive"
import_time=$took
import_peak=$peak
imported=$("$ussctl" list --summary "$target" | sed -n 's/.*, \([0-9]*\) elements$/\1/p')
echo "ussctl import: $import_time s, peak memory $import_peak MiB, $imported elements in the catalog"
[ "$imported" = "$elements" ] || { echo "run.sh: the import wrote $imported of $elements elements" >&2; exit 1; }

unzipped="$work/unzipped"
rm -rf "$unzipped"
start=$(now)
unzip -q -o "$archive" -d "$unzipped"
unzip_time=$(span "$start" "$(now)")

values=$((elements * attributes))
sql="$work/values.sql"
awk -v n="$elements" -v a="$attributes" 'BEGIN {
    print "PRAGMA journal_mode=WAL;";
    print "CREATE TABLE value(element INTEGER, attribute INTEGER, kind INTEGER, i INTEGER, d REAL, s TEXT, PRIMARY KEY(element, attribute));";
    print "BEGIN;";
    for (e = 1; e <= n; e++)
        for (k = 1; k <= a; k++)
            printf "INSERT INTO value VALUES(%d,%d,3,NULL,NULL,%c%s %d-%d%c);\n", e, k, 39, "value", e, k, 39;
    print "COMMIT;";
}' >"$sql"
rm -f "$work/baseline.db" "$work/baseline.db-wal" "$work/baseline.db-shm"
start=$(now)
sqlite3 "$work/baseline.db" <"$sql" >/dev/null
sqlite_time=$(span "$start" "$(now)")
baseline_import=$(echo "$unzip_time $sqlite_time" | awk '{ printf "%.3f", $1 + $2 }')
echo "unzip baseline: $unzip_time s; sqlite3 loading $values values: $sqlite_time s"
import_ratio=$(ratio "$import_time" "$baseline_import")

# --- (c) import peak memory as the document grows -------------------------------------------
memory_line=""
dry_line=""
if [ -n "$scales" ]; then
    for scale in 1 $scales; do
        n=$((elements * scale))
        catalog="$work/scaled_$scale.db"
        archive="$work/scaled_$scale.uss"
        target="$work/scaled_target.db"
        rm -rf "$catalog" "$catalog.files" "$catalog-wal" "$catalog-shm" "$archive" \
            "$target" "$target.files" "$target-wal" "$target-shm"
        "$ussctl" generate --kind tx --elements "$n" --attributes "$attributes" \
            --files "$files" --file-size 4 --seed 1 "$catalog" >/dev/null
        "$ussctl" export "$catalog" "$archive" >/dev/null 2>&1
        document_bytes=$(unzip -l "$archive" TX.json | awk 'NR == 4 { print $1 }')
        document=$(echo "$document_bytes" | awk '{ printf "%d", $1 / 1048576 }')
        "$ussctl" create --kind tx "$target" >/dev/null
        # The reading and deciding alone, apart from what the catalog holds of the elements
        # written.
        measure "$ussctl" import --dry-run "$target" "$archive"
        dry_peak=$peak
        measure "$ussctl" import "$target" "$archive"
        echo "[${scale}x] ussctl import of $n elements (document $document MiB):" \
             "$took s, peak memory $peak MiB (dry run $dry_peak MiB)"
        memory_line="$memory_line ${scale}x $peak MiB,"
        # What each element added past the first scale costs, beside what it adds to the
        # document: the part of the import that still grows with it.
        if [ "$scale" = 1 ]; then
            first_n=$n first_peak=$peak first_dry=$dry_peak first_bytes=$document_bytes
        else
            growth=$(echo "$n $first_n $peak $first_peak $dry_peak $first_dry $document_bytes $first_bytes" |
                awk '{ e = $1 - $2; printf "%.2f KiB (dry run %.2f KiB) against %.1f KiB of document",
                       ($3 - $4) * 1024 / e, ($5 - $6) * 1024 / e, ($7 - $8) / 1024 / e }')
        fi
        dry_line="$dry_line ${scale}x $dry_peak MiB,"
        rm -rf "$catalog" "$catalog.files" "$catalog-wal" "$catalog-shm" "$archive" \
            "$target" "$target.files" "$target-wal" "$target-shm"
    done
fi

echo
echo "export: ussctl $export_time s / zip $zip_time s = $export_ratio (target <= 1.25)"
echo "import: ussctl $import_time s / (unzip + sqlite3) $baseline_import s = $import_ratio (target <= 2)"
echo "peak memory of ussctl export per file size: see the lines above (target < 150 MiB)"
echo "peak memory of ussctl import: $import_peak MiB (target <= 150 MiB)"
[ -z "$memory_line" ] ||
    echo "peak memory of ussctl import as the document grows:${memory_line%,} (target: flat)"
[ -z "$dry_line" ] ||
    echo "peak memory of ussctl import --dry-run as the document grows:${dry_line%,} (target: flat)"
[ -z "${growth:-}" ] || echo "peak memory added per element past 1x: $growth"
