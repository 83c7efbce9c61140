#!/usr/bin/env bash
# Installs what is missing, builds Tavix and runs the demonstration script in batch mode.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/install-deps.sh
bash scripts/build.sh build
build/bin/tavix examples/demo.tvx
