#!/usr/bin/env bash
# Makes the Debian package of a build, unpacks it, and looks whether it does what an installed one
# should: check-package.sh BUILD_FOLDER
set -euo pipefail
build=$(realpath "$1")
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
fail() { echo "$*" >&2; exit 1; }

umask 022
( cd "$build" && cpack -G DEB -B "$tmp/made" >"$tmp/log" 2>&1 ) || { cat "$tmp/log"; exit 1; }
deb=("$tmp"/made/*.deb)
lintian --fail-on error --allow-root "${deb[0]}" || fail "lintian finds errors"

root=$tmp/root
dpkg-deb -x "${deb[0]}" "$root"
share=$root/usr/share
home=$tmp/home
mkdir -p "$home"
person() {
  env -i HOME="$home" PATH="$root/usr/bin:$PATH" QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8 \
    XDG_DATA_DIRS="$share:/usr/local/share:/usr/share" "$@"
}

desktop-file-validate "$share"/applications/*.desktop
appstreamcli validate --no-net "$share"/metainfo/*.xml >"$tmp/log" || { cat "$tmp/log"; exit 1; }
python3 - "$share"/polkit-1/actions/*.policy "$root" <<'PYTHON' || fail "the prompt's program is not there"
import os, sys, xml.etree.ElementTree
action = xml.etree.ElementTree.parse(sys.argv[1]).find("action")
assert action.find("message").text == "Install an update of Corvane ($(command_line))"
assert os.access(sys.argv[2] + action.find("annotate").text, os.X_OK)
PYTHON
# Nothing of a toolkit runs as root.
ldd "$root/usr/lib/corvane/corvane-install-update" >"$tmp/libraries"
! grep -qi libqt "$tmp/libraries" || fail "the privileged side has grown"
update-mime-database "$share/mime" 2>/dev/null
update-desktop-database "$share/applications"

version=$(zcat "$share/doc/corvane/changelog.gz" | sed -n '1s/.*(\(.*\)).*/\1/p')
[ "$(person corvanectl --version)" = "corvanectl $version" ] ||
  fail "program and changelog differ in version"
person corvane-bench --version >/dev/null
for example in "$share"/doc/corvane/examples/*.{lumora,relay,ko_eeprom}; do
  person corvanectl check "$example" >/dev/null
done

type_is() {
  local found
  found=$(person gio info -a standard::content-type "$1" | sed -n 's/.*content-type: //p')
  [ "$found" = "$2" ] || fail "$1 is a $found, not a $2"
}
examples=$share/doc/corvane/examples
type_is "$examples/police.lumora" application/x-corvane-lumora
type_is "$examples/bilge-pump.relay" application/x-corvane-pactor
type_is "$examples/speed-controller.ko_eeprom" application/x-corvane-koeeprom
cp "$examples/police.lumora" "$tmp/A B.LUMORA"
type_is "$tmp/A B.LUMORA" application/x-corvane-lumora
# Into files first: a reader that ends early would break the pipe of the writer.
person gio mime application/x-corvane-lumora >"$tmp/handlers"
grep -q example.ortaline.Corvane.desktop "$tmp/handlers" || fail "nothing opens a light program"

# An installed program writes nothing into the user's data folder, and cleans up what one that was
# not installed has left there.
person "$build/bin/corvane" -register
[ -e "$home/.local/share/mime/packages/corvane.xml" ] || fail "a built program is not registered"
person corvane -register
[ ! -e "$home/.local/share/mime/packages/corvane.xml" ] || fail "an old registration stays"
[ ! -e "$home/.local/share/applications/example.ortaline.Corvane.desktop" ] || fail "it stays"
grep -q "$root/usr/lib/corvane/corvane" "$home/.config/corvane/settings" ||
  fail "the settings do not name the installed program"

for page in corvane corvanectl corvane-bench; do
  zcat "$share/man/man1/$page.1.gz" | sed 's/\\-/-/g' >"$tmp/page"
  grep -q '^\.SH NAME$' "$tmp/page" || fail "no manual page $page"
  [ "$page" = corvane ] && continue
  # Every option and command that the program knows stands in its page.
  for word in $("$root/usr/bin/$page" --help | grep -oE '(--[a-z-]+|^  [a-z-]+ )' | tr -d ' ' |
    sort -u); do
    grep -qF -- "$word" "$tmp/page" || fail "$page: its manual page lacks $word"
  done
done
echo "The package is sound."
