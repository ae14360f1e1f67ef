#!/usr/bin/env bash
# Installs the dependencies, builds the library with its tests, benchmarks and
# tools, and runs every test. Usage: scripts/test.sh [build-dir] [extra cmake args...]
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
# For the tests only, so the demo's path (scripts/main.sh) stays quick: the
# outside renderers that the vector export's tests compare with the PNG, and
# the broker of the call test's three-node RabbitMQ cluster.
missing=()
for p in librsvg2-bin poppler-utils rabbitmq-server; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    sudo_cmd=()
    if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi
    "${sudo_cmd[@]}" apt-get update
    DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
fi

build=${1:-build}
shift || true
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DDOODLE_BUILD_TESTS=ON -DDOODLE_BUILD_BENCH=ON "$@"
cmake --build "$build" -j2
ctest --test-dir "$build" --output-on-failure -j2
