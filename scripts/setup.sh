#!/usr/bin/env bash
# Installs what Norvane needs from Debian 12 and configures a build.
#
#   scripts/setup.sh            build dependencies and test corpora
#   scripts/setup.sh --bench    also the peer tools the benchmarks compare against
#
# This is the only place that names packages. It is idempotent: when every
# package is present it asks apt nothing.
set -euo pipefail

build_packages=(
  build-essential cmake ninja-build ccache pkg-config clang-format
  libicu-dev zlib1g-dev libminizip-dev libexpat1-dev nlohmann-json3-dev
  libplist-dev libmsgpack-dev liblua5.4-dev libmupdf-dev libvips-dev
  libexif-dev libavformat-dev libavcodec-dev libswscale-dev libavutil-dev
  libglib2.0-dev shared-mime-info libsystemd-dev libfmt-dev
  libgtest-dev libgmock-dev libbenchmark-dev
)
# Real inputs the tests read (they skip cleanly where one is absent).
corpus_packages=(python3.11-doc w3c-sgml-lib)
# Fuzzing with libFuzzer.
fuzz_packages=(clang libclang-rt-14-dev)
# Peers measured side by side in bench/.
bench_packages=(
  libxml2-dev libgumbo-dev libxapian-dev libpcre2-dev
  lynx w3m html2text python3-w3lib tracker tracker-extract dbus hyperfine
)

wanted=("${build_packages[@]}" "${corpus_packages[@]}")
for arg in "$@"; do
  case "$arg" in
    --bench) wanted+=("${bench_packages[@]}" "${fuzz_packages[@]}") ;;
    --fuzz) wanted+=("${fuzz_packages[@]}") ;;
    *) echo "setup.sh: unknown option $arg" >&2; exit 2 ;;
  esac
done

missing=()
for p in "${wanted[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
