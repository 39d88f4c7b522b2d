#!/usr/bin/env bash
# The hand explorer's browser tests: builds the native library and the site, serves the site on
# 127.0.0.1, and drives it with headless Chromium (playwright-core): a clean load, the controls,
# sessions in and out, and the WebAssembly library against the native one, bit for bit, for
# every hand. Leaves a screenshot in build-web/test/explorer.png.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh

jobs=$(nproc 2>/dev/null || echo 2)
out=build-web/test
mkdir -p "$out"

echo "== native library and reference"
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j "$jobs"
g++ -std=c++17 -O2 -ffp-contract=off -Wall -Wextra -Iinclude web/tests/native_reference.cpp \
  -Lbuild -lquil_linear -Wl,-rpath,"$PWD/build" -o "$out/native_reference"

echo "== WebAssembly library and site"
bash scripts/web.sh build

echo "== browser tests"
if [ ! -f web/node_modules/.package-lock.json ] || [ web/package-lock.json -nt web/node_modules/.package-lock.json ]; then
  (cd web && npm ci --no-audit --no-fund --loglevel=error)
fi

server_log="$out/serve.log"
bash scripts/web.sh serve 0 >"$server_log" 2>&1 &
server=$!
trap 'kill "$server" 2>/dev/null || true' EXIT
url=""
for _ in $(seq 1 100); do
  url=$(grep -o 'http://127\.0\.0\.1:[0-9]*/' "$server_log" || true)
  [ -n "$url" ] && break
  kill -0 "$server" 2>/dev/null || { cat "$server_log"; exit 1; }
  sleep 0.2
done
[ -n "$url" ] || { echo "the site server did not start"; cat "$server_log"; exit 1; }

tool=()
[ -x build/tools/quil-retarget ] && tool=(--tool build/tools/quil-retarget)
node web/tests/explorer_test.mjs --url "$url" --site "$PWD/build-web/site" --native-reference "$out/native_reference" \
  --out "$out" "${tool[@]}"
# The wiring profile panel, on the page opened from disk, with the example profiles.
node web/tests/profile_test.mjs --site "$PWD/build-web/site" --profiles "$PWD/profiles" --out "$out"
