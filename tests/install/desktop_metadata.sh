#!/usr/bin/env bash
# The desktop file and the AppStream metadata pass their validators; the
# MIME type is well formed and the desktop file names it; the manual pages
# render without warnings.
set -euo pipefail
data="$1/data"
fail() { echo "FAIL: $*" >&2; exit 1; }

if ! command -v appstreamcli >/dev/null || ! command -v desktop-file-validate >/dev/null; then
  echo "SKIP: appstreamcli or desktop-file-validate is not installed"
  exit 77
fi
appstreamcli validate --no-net "$data/com.corvane.Lectern.metainfo.xml" || fail "the metainfo does not validate"
desktop-file-validate "$data/com.corvane.Lectern.desktop" || fail "the desktop file does not validate"
out=$(desktop-file-validate "$data/com.corvane.Lectern.desktop" 2>&1)
[ -z "$out" ] || fail "desktop-file-validate: $out"

mime=application/vnd.com.corvane.lectern.deck
grep -q "^MimeType=$mime;\$" "$data/com.corvane.Lectern.desktop" || fail "the desktop file does not name $mime"
if command -v update-mime-database >/dev/null; then
  # The database builds from our file alone, and knows the glob.
  db=$(mktemp -d)
  trap 'rm -rf "$db"' EXIT
  mkdir -p "$db/packages"
  cp "$data/com.corvane.Lectern.mime.xml" "$db/packages/com.corvane.Lectern.xml"
  update-mime-database "$db" >/dev/null 2>&1 || fail "update-mime-database failed"
  grep -q "^$mime:\*\.lectern\$" "$db/globs" || fail "no *.lectern glob in the database"
  grep -q "^$mime inode/directory\$" "$db/subclasses" || fail "the deck type is not a folder type"
fi
if command -v man >/dev/null; then
  for page in lectern.1 lectern-cli.1; do
    warnings=$(MANWIDTH=80 man --warnings -l "$data/$page" 2>&1 >/dev/null)
    [ -z "$warnings" ] || fail "$page: $warnings"
  done
fi
echo "desktop metadata ok"
