#!/usr/bin/env bash
# Installs the dependencies, builds the library, its tools and the demo, and runs
# the demo host: a window with two participants when a display is available,
# otherwise the sample session played offscreen into one PNG per board.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh

build=${1:-build}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DDOODLE_BUILD_TESTS=OFF
cmake --build "$build" -j2
demo=$(cd "$build" && pwd)/examples/two-boards/doodle_demo
# Saved pictures go to out/ in the repository, wherever the demo runs from.
DOODLE_DEMO_PICTURES=$(pwd)/out "$demo"
