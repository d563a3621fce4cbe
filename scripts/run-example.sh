#!/usr/bin/env bash
# Installs what is needed, builds the release tool, and runs it on an example.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release --target norvane
build/release/src/cli/norvane strings summary -n 2 examples/notes.txt
