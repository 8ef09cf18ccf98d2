#!/usr/bin/env bash
# Installs every system package oxGraphics needs on Debian 12. Idempotent and non-interactive;
# runs as root directly or through sudo.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  libgl-dev libglu1-mesa-dev libegl-dev libgl1-mesa-dri libegl-mesa0 libglew-dev
  libx11-dev xvfb xauth xdotool
  libspdlog-dev libfreetype-dev libfontconfig-dev fonts-dejavu-core
  libpng-dev libassimp-dev libglfw3-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev
  g++-mingw-w64-x86-64-posix gcc-mingw-w64-x86-64-posix
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "setup: all ${#packages[@]} packages present"
  exit 0
fi

sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "setup: run as root or install sudo" >&2; exit 1; }
  sudo_cmd=(sudo)
fi

echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" </dev/null
