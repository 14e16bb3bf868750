# SPDX-License-Identifier: Apache-2.0
# What the scripts share; to be sourced. Gives: $root, $jobs, say, fail, build, make_media, serve.
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
jobs="$(nproc)"
cd "$root"

say() { printf '== %s\n' "$*"; }

fail() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# build PRESET [TARGET…]: configures once, builds, and prints the build's output only when it fails.
build() {
  local preset="$1" log="$root/build/$1.log"
  shift
  mkdir -p "$root/build"
  local targets=()
  if [[ $# -gt 0 ]]; then targets=(--target "$@"); fi
  if ! { cmake --preset "$preset" && cmake --build --preset "$preset" -j "$jobs" "${targets[@]}"; } >"$log" 2>&1; then
    tail -n 60 "$log" >&2
    printf 'The %s build failed; the whole output is in %s\n' "$preset" "$log" >&2
    return 1
  fi
}

make_media() { python3 "$root/tests/platform/media/make_media.py" "$1"; }

# serve FOLDER: starts the web server on the loopback address and sets $base to its address. It ends with this script, whatever
# happens: it holds the other end of a pipe.
serve() {
  local line
  coproc server { exec python3 "$root/tests/platform/media/server.py" --root "$1" --until-eof; }
  read -r -t 10 line <&"${server[0]}" || fail "the web server did not start"
  base="http://127.0.0.1:${line#PORT }/"
}
