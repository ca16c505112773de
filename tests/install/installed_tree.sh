#!/usr/bin/env bash
# Installs into a fresh prefix and runs the programs from there: they find
# the example deck and the demo site's pages beside themselves, and carry no
# path of the machine that built them.
set -euo pipefail
source_dir=$1
build_dir=$2
prefix=$(mktemp -d)
demo=""
cleanup() {
  if [ -n "$demo" ]; then kill "$demo" 2>/dev/null || true; wait "$demo" 2>/dev/null || true; fi
  rm -rf "$prefix"
}
trap cleanup EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

cmake --install "$build_dir" --prefix "$prefix" --strip >/dev/null

for file in bin/lectern bin/lectern-cli bin/lectern-demo-site \
    share/lectern/Welcome.lectern/deck.json share/lectern/demo-site/index.html \
    share/applications/com.corvane.Lectern.desktop share/metainfo/com.corvane.Lectern.metainfo.xml \
    share/icons/hicolor/scalable/apps/com.corvane.Lectern.svg \
    share/icons/hicolor/symbolic/apps/com.corvane.Lectern-symbolic.svg \
    share/mime/packages/com.corvane.Lectern.xml share/man/man1/lectern.1 share/man/man1/lectern-cli.1; do
  [ -e "$prefix/$file" ] || fail "$file is not installed"
done
# Copies, not links back into the source tree.
[ ! -L "$prefix/share/lectern/Welcome.lectern" ] || fail "the example deck is installed as a link"
# Nothing that is only for developers.
for program in "$prefix"/bin/*; do
  case "$(basename "$program")" in
    lectern | lectern-cli | lectern-demo-site) ;;
    *) fail "$(basename "$program") should not be installed" ;;
  esac
done

# No path of the source or build folder in any installed program.
for program in "$prefix"/bin/*; do
  for path in "$source_dir" "$build_dir"; do
    count=$(grep -c -a -F "$path" "$program" || true)
    [ "$count" = 0 ] || fail "$(basename "$program") contains $path"
  done
done

# Run from the prefix, with the build and source folders out of sight.
cd "$prefix/bin"
unset LECTERN_DATA_DIR LECTERN_EXAMPLE_DECK
version=$(./lectern-cli --version)
[ "$version" = "lectern-cli 0.1.0" ] || fail "lectern-cli --version printed '$version'"
outline=$(./lectern-cli outline "$prefix/share/lectern/Welcome.lectern")
grep -q "^01 " <<<"$outline" || fail "the installed example deck has no outline: $outline"

# The installed demo site serves its page, found from its own place.
ready="$prefix/demo-site.out"
for attempt in 1 2 3 4 5; do
  port=$((20000 + RANDOM % 40000))
  ./lectern-demo-site --port "$port" >"$ready" 2>&1 &
  demo=$!
  for _ in $(seq 1 100); do
    if grep -q "ready" "$ready" || ! kill -0 "$demo" 2>/dev/null; then break; fi
    sleep 0.1
  done
  grep -q "ready" "$ready" && break
  wait "$demo" 2>/dev/null || true  # the port was taken: another
  demo=""
done
[ -n "$demo" ] || fail "the demo site did not start: $(cat "$ready")"
exec 3<>"/dev/tcp/127.0.0.1/$port"
printf 'GET / HTTP/1.0\r\nHost: 127.0.0.1\r\n\r\n' >&3
page=$(timeout 10 cat <&3 || true)
exec 3<&-
grep -q "^HTTP/1.[01] 200" <<<"$page" || fail "the demo site answered: $(head -1 <<<"$page")"
grep -qi "<html" <<<"$page" || fail "the demo site's page is not HTML"
kill "$demo"
wait "$demo" || fail "the demo site did not stop cleanly"
demo=""
echo "installed tree ok"
