#!/usr/bin/env bash
# Configures and builds Tavix: scripts/build.sh [build-dir] [cmake options...] (default dir: build).
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Compiler caches are shared between checkouts in different folders: paths below the sources
# are hashed relative to them.
export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$PWD}

build_dir=${1:-build}
shift || true

# The generator is fixed when a build directory is first configured; keep whatever it has.
generator=()
[[ -f $build_dir/CMakeCache.txt ]] || generator=(-G Ninja)

cmake -S . -B "$build_dir" "${generator[@]}" -DCMAKE_BUILD_TYPE=Release "$@"
cmake --build "$build_dir" -j2
