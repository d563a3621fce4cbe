#!/bin/bash
# Times HTML to plain text with text-mode browsers and converters against
# `norvane html2text`, one process per page for every tool, pages in
# sequence, over the same pages (by default the 100 largest pages of the
# Python 3.11 documentation).
#
# Each tool runs as a shell loop over the page list under hyperfine (with
# warm-up, so the pages are in the page cache); without hyperfine the loop is
# timed with `time`. The table gives wall time and CPU time (user + system of
# the loop and its children: the figure to compare on a shared machine),
# pages/s and MB/s from CPU time, and each tool's CPU time as a multiple of
# norvane's. The start cost of each tool is measured the same way on a page
# with one word, and is included in the per-page figures.
#
# Usage: bench/html2text_peers.sh [-n PAGES|all] [-r RUNS] [-d DIR]
#   NORVANE=path/to/norvane overrides the binary (default: the release build).
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
pages=100
runs=3
dir=/usr/share/doc/python3.11/html
while getopts "n:r:d:h" option; do
  case $option in
    n) pages=$OPTARG ;;
    r) runs=$OPTARG ;;
    d) dir=$OPTARG ;;
    *) sed -n '2,17p' "$0" | sed 's/^# \{0,1\}//'; exit 2 ;;
  esac
done

norvane=${NORVANE:-}
if [[ -z $norvane ]]; then
  for candidate in "$root/build/release/src/cli/norvane" "$root/build-htmlbench/src/cli/norvane"; do
    if [[ -x $candidate ]]; then norvane=$candidate; break; fi
  done
fi
if [[ -z $norvane || ! -x $norvane ]]; then
  echo "no norvane binary: build the release preset or set NORVANE" >&2
  exit 1
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The page list, largest first, and its size.
find "$dir" -name '*.html' -type f -printf '%s %p\n' | sort -rn >"$work/all"
if [[ $pages == all ]]; then cp "$work/all" "$work/chosen"; else head -n "$pages" "$work/all" >"$work/chosen"; fi
cut -d' ' -f2- "$work/chosen" >"$work/list"
count=$(wc -l <"$work/list")
bytes=$(awk '{ s += $1 } END { print s }' "$work/chosen")
if ((count == 0)); then
  echo "no pages under $dir" >&2
  exit 1
fi
printf '<html><body><p>word</p></body></html>\n' >"$work/tiny.html"
for ((i = 0; i < count; i++)); do echo "$work/tiny.html"; done >"$work/tiny"

names=(norvane lynx w3m html2text)
declare -A commands=(
  [norvane]="\"$norvane\" html2text --body"
  [lynx]="lynx -dump -nolist -display_charset=utf-8"
  [w3m]="w3m -dump -T text/html"
  [html2text]="html2text -utf8 -nobs"
)
available=()
for name in "${names[@]}"; do
  read -r program _ <<<"${commands[$name]}"
  program=${program//\"/}
  if command -v "$program" >/dev/null 2>&1; then available+=("$name"); else echo "skipping $name: not installed" >&2; fi
done

# Prints "wall_seconds cpu_seconds" for one loop over a list.
measure() {
  local command=$1 list=$2 loop
  loop="while IFS= read -r f; do $command \"\$f\" >/dev/null 2>&1 </dev/null; done <\"$list\"; true"
  if command -v hyperfine >/dev/null 2>&1; then
    hyperfine --style none --ignore-failure --warmup 1 --runs "$runs" --export-json "$work/result.json" \
      --shell bash "$loop" >/dev/null 2>&1
    jq -r '.results[0] | "\(.mean) \(.user + .system)"' "$work/result.json"
  else
    local start end times
    start=$(date +%s.%N)
    times=$( { TIMEFORMAT='%U %S'; time bash -c "$loop"; } 2>&1 >/dev/null)
    end=$(date +%s.%N)
    awk -v s="$start" -v e="$end" -v t="$times" 'BEGIN { split(t, a, " "); print e - s, a[1] + a[2] }'
  fi
}

declare -A wall cpu startCpu
for name in "${available[@]}"; do
  echo "timing $name on $count pages..." >&2
  read -r "wall[$name]" "cpu[$name]" < <(measure "${commands[$name]}" "$work/list")
  read -r _ "startCpu[$name]" < <(measure "${commands[$name]}" "$work/tiny")
done

megabytes=$(awk -v b="$bytes" 'BEGIN { printf "%.1f", b / 1e6 }')
echo
echo "$count pages, $megabytes MB, one process per page, $runs runs (hyperfine: mean)"
echo
printf '| %-9s | %8s | %8s | %8s | %7s | %9s | %14s |\n' tool "wall s" "CPU s" "pages/s" "MB/s" "CPU ratio" "start ms (CPU)"
printf '|%s|%s|%s|%s|%s|%s|%s|\n' -----------  ---------- ---------- ---------- --------- ----------- ----------------
for name in "${available[@]}"; do
  awk -v n="$name" -v w="${wall[$name]}" -v c="${cpu[$name]}" -v base="${cpu[norvane]:-0}" -v pages="$count" \
    -v b="$bytes" -v sc="${startCpu[$name]}" 'BEGIN {
      ratio = base > 0 ? sprintf("%.1fx", c / base) : "-"
      printf "| %-9s | %8.2f | %8.2f | %8.1f | %7.2f | %9s | %14.2f |\n", n, w, c, pages / c, b / 1e6 / c, ratio,
             1000 * sc / pages
    }'
done
echo
echo "CPU ratio: the tool's CPU time over norvane's (higher is slower)."
echo "start ms: CPU per process on a one-word page, the floor of every per-page figure."
