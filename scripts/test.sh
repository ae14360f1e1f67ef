#!/usr/bin/env bash
# Installs the dependencies, builds the library with its tests, benchmarks and
# tools, and runs every test. Usage: scripts/test.sh [build-dir] [extra cmake args...]
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh

build=${1:-build}
shift || true
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DDOODLE_BUILD_TESTS=ON -DDOODLE_BUILD_BENCH=ON "$@"
cmake --build "$build" -j2
ctest --test-dir "$build" --output-on-failure -j2
