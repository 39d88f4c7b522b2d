#!/usr/bin/env bash
# The hand explorer in the browser.
#   bash scripts/web.sh build          builds the WebAssembly library and writes the static site
#                                      into build-web/site/ (index.html, scripts, the module);
#                                      index.html also works opened straight from disk
#   bash scripts/web.sh serve [PORT]   builds when needed and serves the site on 127.0.0.1
#                                      (PORT defaults to 8000; 0 picks a free one), printing the URL
set -euo pipefail
cd "$(dirname "$0")/.."

site=build-web/site
wasm=build-web/wasm

build() {
  bash scripts/bootstrap.sh
  # Debian's emscripten finds its Node.js modules only through NODE_PATH.
  export NODE_PATH=/usr/share/nodejs${NODE_PATH:+:$NODE_PATH}
  if [ ! -f "$wasm/build.ninja" ]; then
    emcmake cmake -S web -B "$wasm" -G Ninja >/dev/null
  fi
  cmake --build "$wasm" -j "$(nproc 2>/dev/null || echo 2)"

  # Everything the page needs sits next to index.html: nothing is fetched from elsewhere.
  local next=build-web/site.next
  rm -rf "$next"
  mkdir -p "$next/js"
  cp web/index.html web/style.css "$next/"
  cp web/js/*.js "$next/js/"
  cp "$wasm/quil_wasm.js" "$wasm/quil_wasm.wasm" "$next/"
  cp data/sample_session.csv "$next/"
  # The sample session as a script, and the module's bytes as a script for a page opened
  # from disk, where the browser fetches nothing.
  python3 - data/sample_session.csv "$wasm/quil_wasm.wasm" "$next" <<'EOF'
import base64, json, sys
session, module, site = sys.argv[1:4]
with open(site + "/sample_session.js", "w", encoding="utf-8") as f:
    f.write("// The sample glove session (data/sample_session.csv).\n")
    f.write("window.QUIL_SAMPLE_SESSION = %s;\n" % json.dumps(open(session, encoding="utf-8").read()))
with open(site + "/quil_wasm_binary.js", "w", encoding="ascii") as f:
    f.write("// quil_wasm.wasm, for the page opened from disk.\n")
    f.write("window.QUIL_WASM_BASE64 = '%s';\n" % base64.b64encode(open(module, "rb").read()).decode())
EOF
  rm -rf "$site"
  mv "$next" "$site"
  echo "site written to $site/"
}

serve() {
  local port="${1:-8000}"
  build >&2
  exec python3 - "$site" "$port" <<'EOF'
import functools, http.server, sys

class Handler(http.server.SimpleHTTPRequestHandler):
    extensions_map = {**http.server.SimpleHTTPRequestHandler.extensions_map,
                      ".wasm": "application/wasm", ".js": "text/javascript"}

    def end_headers(self):
        self.send_header("Cache-Control", "no-store")
        super().end_headers()

    def log_message(self, *args):
        pass

site, port = sys.argv[1], int(sys.argv[2])
server = http.server.ThreadingHTTPServer(("127.0.0.1", port), functools.partial(Handler, directory=site))
print("Hand explorer: http://127.0.0.1:%d/" % server.server_address[1], flush=True)
try:
    server.serve_forever()
except KeyboardInterrupt:
    pass
EOF
}

case "${1:-}" in
  build) build ;;
  serve) serve "${2:-8000}" ;;
  *) echo "usage: bash scripts/web.sh build | serve [PORT]" >&2; exit 2 ;;
esac
