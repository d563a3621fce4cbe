#!/usr/bin/env bash
# Installs what is needed, builds the release tool, the helper and the shipped
# importers, and asks the helper for the metadata of two example files. The
# helper is started for the request and stopped again afterwards.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release --target norvane norvane-helper norvane_text_importer norvane_html_importer
build/release/src/cli/norvane metadata examples/notes.txt examples/page.html
