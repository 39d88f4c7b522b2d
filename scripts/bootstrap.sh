#!/usr/bin/env bash
# Installs what the build, the tests and the benchmarks need, only where it is missing.
# Debian/Ubuntu; run as root or with sudo available.
set -euo pipefail

packages=(g++ cmake ninja-build pkg-config libgtest-dev libbenchmark-dev python3 librsvg2-bin
  libcli11-dev nlohmann-json3-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}"
as_root=()
[ "$(id -u)" -ne 0 ] && as_root=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
