#!/usr/bin/env bash
# Files per second for metaDataForFile: through the norvane CLI's client
# path, side by side with the peer extractor `tracker3 extract`, on the same
# N small text files.
#
#   bench/metadata_peer.sh [NORVANE]     (default: build-rel/src/cli/norvane)
#
# Environment: N (files, 10000), BATCH (files per command line, 1000),
# NORVANE_HELPER (the helper program, if not found beside NORVANE), PEER=0
# to leave out the (slow) peer run.
# Each tool gets the files in batches of BATCH per invocation. Three runs:
#   norvane (cold)  every invocation launches its own helper and ends it
#   norvane (warm)  one helper started before, used by every invocation
#   tracker3        `tracker3 extract` under one dbus-run-session
# The helper runs in a private runtime directory, so a helper of the user's
# own is neither used nor disturbed.
set -euo pipefail

norvane=${1:-build-rel/src/cli/norvane}
files=${N:-10000}
batch=${BATCH:-1000}
[[ -x $norvane ]] || { echo "no norvane executable at $norvane" >&2; exit 1; }
norvane=$(realpath "$norvane")
command -v tracker3 >/dev/null || { echo "tracker3 is not installed (packages tracker, tracker-extract)" >&2; exit 1; }

work=$(mktemp -d)
export XDG_RUNTIME_DIR=$work/run
mkdir -m 700 "$XDG_RUNTIME_DIR"
cleanup() {
  "$norvane" helper stop >/dev/null 2>&1 || true
  rm -rf "$work"
}
trap cleanup EXIT

# Small text files of a few lines each, all different.
mkdir "$work/files"
for ((i = 0; i < files; i++)); do
  printf 'Note %d\nThe harbour office counted %d crates on day %d.\nNothing else to report.\n' \
    "$i" "$((i * 7 % 1000))" "$((i % 365))" >"$work/files/note$i.txt"
done
(cd "$work/files" && ls | sed "s|^|$work/files/|") >"$work/list"

now() { date +%s.%N; }
rate() {
  awk -v name="$1" -v n="$files" -v s="$2" -v e="$3" \
    'BEGIN { t = e - s; printf "%-16s %7d files %8.2f s %10.0f files/s\n", name, n, t, n / t }'
}

# Each run prints its output to a file; the number of files that came back
# with text shows both did the same work.
run_norvane() {
  xargs -n "$batch" "$norvane" metadata --json <"$work/list" >"$work/out.$1"
}

start=$(now); run_norvane cold; end=$(now)
cold=$(rate "norvane (cold)" "$start" "$end")
cold_found=$(grep -c '"kMDItemTextContent"' "$work/out.cold" || true)

"$norvane" helper start >/dev/null
start=$(now); run_norvane warm; end=$(now)
warm=$(rate "norvane (warm)" "$start" "$end")
warm_found=$(grep -c '"kMDItemTextContent"' "$work/out.warm" || true)
"$norvane" helper stop >/dev/null

if [[ ${PEER:-1} != 0 ]]; then
start=$(now)
dbus-run-session -- xargs -n "$batch" tracker3 extract <"$work/list" >"$work/out.tracker" 2>/dev/null
end=$(now)
peer=$(rate "tracker3 extract" "$start" "$end")
peer_found=$(grep -c 'nie:plainTextContent' "$work/out.tracker" || true)
fi

echo "files: $files, batch: $batch, $(nproc) CPUs, load $(cut -d' ' -f1-3 /proc/loadavg)"
echo "$cold   (text for $cold_found)"
echo "$warm   (text for $warm_found)"
[[ ${PEER:-1} == 0 ]] || echo "$peer   (text for $peer_found)"
