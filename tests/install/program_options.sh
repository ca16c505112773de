#!/usr/bin/env bash
# --help and --version print to standard output and succeed; an unknown
# option prints a usage line to standard error and fails with status 2.
# `lectern` answers both without a display.
set -euo pipefail
build_dir=$2
out=$(mktemp)
err=$(mktemp)
trap 'rm -f "$out" "$err"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

# expect STATUS STREAM PATTERN PROGRAM ARGS...: STREAM (stdout or stderr)
# holds PATTERN and the other one is empty.
expect() {
  local status=$1 stream=$2 pattern=$3
  shift 3
  local got=0
  timeout 30 env -u DISPLAY -u WAYLAND_DISPLAY "$@" >"$out" 2>"$err" </dev/null || got=$?
  local what="$(basename "$1") ${*:2}"
  [ "$got" = "$status" ] || fail "$what: status $got, not $status (stderr: $(cat "$err"))"
  local file=$out other=$err
  if [ "$stream" = stderr ]; then file=$err; other=$out; fi
  grep -q -e "$pattern" "$file" || fail "$what: no '$pattern' on $stream: $(cat "$file")"
  [ ! -s "$other" ] || fail "$what: unexpected output on the other stream: $(cat "$other")"
}

app="$build_dir/src/lectern"
cli="$build_dir/src/lectern-cli"
demo="$build_dir/examples/lectern-demo-site"

expect 0 stdout '^lectern 0\.1\.0$' "$app" --version
expect 0 stdout '--version' "$app" --help
expect 0 stdout '--version' "$app" -h
expect 2 stderr '^Usage: lectern' "$app" --no-such-option
# An unknown option is refused even after deck folders.
expect 2 stderr '--frobnicate' "$app" Talk.lectern --frobnicate

expect 0 stdout '^lectern-cli 0\.1\.0$' "$cli" --version
expect 0 stdout 'outline DECK' "$cli" --help
expect 2 stderr '^Usage: lectern-cli' "$cli" --no-such-option
expect 2 stderr '^Usage: lectern-cli' "$cli"

expect 0 stdout '--port' "$demo" --help
expect 2 stderr '^Usage: lectern-demo-site' "$demo" --no-such-option
echo "program options ok"
