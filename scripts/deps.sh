#!/usr/bin/env bash
# Installs what the build, the tests and the benchmarks need on Debian 12.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config
    qt6-base-dev qt6-base-dev-tools qt6-svg-dev libgl-dev zlib1g-dev
    libbenchmark-dev
    qt6-tools-dev qt6-l10n-tools
    qt6-declarative-dev qml6-module-qtquick qml6-module-qtquick-window
    qml6-module-qtqml-workerscript
    libmosquitto-dev mosquitto mosquitto-clients openssl
    clang libclang-rt-14-dev clang-format
    fonts-dejavu-core locales xvfb xauth xdotool imagemagick
)

sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    "${sudo_cmd[@]}" apt-get update
    DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
fi

# The text form must not depend on the locale: the codec tests also run under
# a locale with a decimal comma.
if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
    "${sudo_cmd[@]}" sed -i 's/^# *de_DE.UTF-8 UTF-8/de_DE.UTF-8 UTF-8/' /etc/locale.gen
    grep -q '^de_DE.UTF-8 UTF-8' /etc/locale.gen || echo 'de_DE.UTF-8 UTF-8' | "${sudo_cmd[@]}" tee -a /etc/locale.gen >/dev/null
    "${sudo_cmd[@]}" locale-gen
fi
