#!/usr/bin/env bash
# cpack makes a .deb of the installed tree, with the libraries' packages
# found by dpkg-shlibdeps among its dependencies.
set -euo pipefail
build_dir=$2
fail() { echo "FAIL: $*" >&2; exit 1; }

if ! command -v dpkg-shlibdeps >/dev/null || ! command -v dpkg-deb >/dev/null; then
  echo "SKIP: dpkg-shlibdeps or dpkg-deb is not installed"
  exit 77
fi
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
(cd "$build_dir" && cpack -G DEB -B "$out" >"$out/cpack.log" 2>&1) || fail "cpack: $(tail -20 "$out/cpack.log")"
deb=$(ls "$out"/lectern_*.deb 2>/dev/null | head -1)
[ -n "$deb" ] || fail "no lectern_*.deb in $(ls "$out")"

[ "$(dpkg-deb -f "$deb" Package)" = lectern ] || fail "the package is not named lectern"
contents=$(dpkg-deb -c "$deb")
for file in ./usr/bin/lectern ./usr/bin/lectern-cli ./usr/bin/lectern-demo-site \
    ./usr/share/applications/com.corvane.Lectern.desktop ./usr/share/metainfo/com.corvane.Lectern.metainfo.xml \
    ./usr/share/lectern/Welcome.lectern/deck.json; do
  grep -q " $file\$" <<<"$contents" || fail "$file is not in the package"
done
depends=$(dpkg-deb -f "$deb" Depends)
for package in libgtk-4-1 libwebkitgtk-6.0-4 fonts-cantarell; do
  grep -Eq "(^|, )$package( |,|\$)" <<<"$depends" || fail "the package does not depend on $package: $depends"
done
grep -q xvfb <<<"$(dpkg-deb -f "$deb" Suggests)" || fail "xvfb is not suggested"
echo "debian package ok: $(basename "$deb")"
