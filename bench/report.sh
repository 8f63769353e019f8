#!/bin/sh
# Runs the benchmarks of a build folder and prints all their figures as one
# table, to follow them from run to run:
#
#   bench/report.sh [BUILD_DIR [bench_NAME...]]
#
# BUILD_DIR defaults to "build"; names pick some benchmarks instead of all.
# Each benchmark prints one "BENCH|figure|value|unit|limit|ratio|met" line per
# figure (bench/BenchReport.h); its whole output is kept in BUILD_DIR/bench/logs.
# Exits non-zero only when a benchmark could not run to its end: missed
# targets show in the table.
set -u

build=${1:-build}
[ $# -gt 0 ] && shift
benchdir=$build/bench
logdir=$benchdir/logs

named=$# absent=0
if [ $# -eq 0 ]; then
    set -- "$benchdir"/bench_*
else
    for name; do
        shift
        set -- "$@" "$benchdir/$(basename "$name")"
    done
fi

# Only what is there and executable: a glob that matched nothing stays literal.
for exe; do
    shift
    if [ -f "$exe" ] && [ -x "$exe" ]; then
        set -- "$@" "$exe"
    elif [ "$named" -gt 0 ]; then
        echo "no benchmark executable $exe" >&2
        absent=1
    fi
done
if [ $# -eq 0 ]; then
    echo "no benchmark executables in $benchdir (configure with -DTORVEX_BUILD_BENCH=ON and build)" >&2
    exit 1
fi

mkdir -p "$logdir" || exit 1

# The preview benchmark paints in a real X window: without a display, a
# private X server of our own for the run, stopped at the end.
xvfb_pid=
if [ -z "${DISPLAY:-}" ] && command -v Xvfb >/dev/null 2>&1; then
    displayfile=$logdir/xvfb.display
    : >"$displayfile"
    Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp 3>"$displayfile" >/dev/null 2>&1 &
    xvfb_pid=$!
    trap 'kill "$xvfb_pid" 2>/dev/null' EXIT
    for _ in $(seq 50); do
        [ -s "$displayfile" ] && break
        sleep 0.1
    done
    [ -s "$displayfile" ] && export DISPLAY=":$(cat "$displayfile")"
fi
rows=$logdir/figures
failures=$logdir/failures
: >"$rows"
: >"$failures"
started=$(date '+%Y-%m-%d %H:%M:%S %z')

for exe; do
    name=$(basename "$exe")
    printf 'running %s ...' "$name" >&2
    start=$(date +%s)
    "$exe" >"$logdir/$name.out" 2>"$logdir/$name.err"
    status=$?
    printf ' %s s\n' $(($(date +%s) - start)) >&2
    # From the tag on, in case other output (a colour code) shares the line.
    before=$(wc -l <"$rows")
    awk '{ at = index($0, "BENCH|"); if (at) print substr($0, at) }' "$logdir/$name.out" >>"$rows"
    count=$(($(wc -l <"$rows") - before))
    if [ "$status" -ne 0 ] || [ "$count" -eq 0 ]; then
        echo "$name: exit status $status after $count figures; output in $logdir/$name.out and .err" >>"$failures"
    fi
done

cpu=$(sed -n 's/^model name[[:space:]]*:[[:space:]]*//p' /proc/cpuinfo 2>/dev/null | head -n 1)
echo
echo "Benchmarks of $build, started $started, nproc $(nproc)${cpu:+, $cpu}"
echo

# Two passes over the rows: column widths first, then the aligned table.
awk -F'|' '
NF != 7 { bad++; next }
{
    n++
    figure[n] = $2
    measured[n] = $3 " " $4
    limit[n] = $5
    ratio[n] = $6
    target[n] = $7 == "1" ? "met" : $7 == "0" ? "MISSED" : "-"
    if ($7 == "1") met++
    if ($7 == "0") missed++
}
function widen(w, text) { return length(text) > w ? length(text) : w }
END {
    wf = length("figure"); wm = length("measured"); wl = length("limit"); wr = length("ratio")
    for (i = 1; i <= n; i++) {
        wf = widen(wf, figure[i]); wm = widen(wm, measured[i]); wl = widen(wl, limit[i]); wr = widen(wr, ratio[i])
    }
    format = "%-" wf "s  %" wm "s  %-" wl "s  %" wr "s  %s\n"
    printf format, "figure", "measured", "limit", "ratio", "target"
    rule = ""
    for (i = 0; i < wf + wm + wl + wr + 8 + length("MISSED"); i++) rule = rule "-"
    print rule
    for (i = 1; i <= n; i++) printf format, figure[i], measured[i], limit[i], ratio[i], target[i]
    print rule
    printf "%d figures: %d met, %d MISSED, %d without a limit\n", n, met, missed, n - met - missed
    if (bad) printf "%d malformed BENCH lines left out\n", bad
}' "$rows"

if [ -s "$failures" ]; then
    echo
    echo "Benchmarks that did not run to their end:"
    cat "$failures"
    exit 1
fi
exit "$absent"
