#!/usr/bin/env bash
# Installs a Debian package into a clean Debian 12 of its own, tries it there, and removes it again.
# Then builds this version and the next one for a server that it runs itself, and goes from one to
# the other as a person does, with the system's own prompt, and killed at each place on the way.
# Usage: check-clean-root.sh PACKAGE.deb
# Needs root, debootstrap, what the tests need, and the package servers that this machine uses; takes
# a quarter of an hour. For before a version is published.
set -euo pipefail
deb=$(realpath "$1")
source=$(realpath "$(dirname "${BASH_SOURCE[0]}")/..")
root=$(mktemp -d)
work=$(mktemp -d)
chmod 755 "$root"
cleanup() {
  # What was started in there, by its number, and nothing else.
  local process
  for process in /proc/[0-9]*; do
    [ "$(readlink "$process/root")" != "$root" ] || kill -9 "${process#/proc/}" || true
  done
  sleep 0.5
  umount "$root/proc" 2>/dev/null || true
  rm -rf --one-file-system "$root" "$work"
}
trap cleanup EXIT
fail() { echo "$*" >&2; exit 1; }
within() { LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive chroot "$root" "$@"; }
everything() { ( cd "$root" && find etc usr opt var/lib -not -path 'var/lib/dpkg/*' \
  -not -path 'var/lib/apt/*' -not -name '*.cache' -not -name '*.pyc' | sort ); }

mirror=$(apt-get indextargets --format '$(REPO_URI) $(CODENAME)' 'Created-By: Packages' |
  awk '$2 == "bookworm" { print $1; exit }')
debootstrap --variant=minbase bookworm "$root" "$mirror" >/dev/null
cp -r /etc/apt/apt.conf.d "$root/etc/apt/" 2>/dev/null || true
mount -t proc proc "$root/proc"
within apt-get -qq update
# What people have on a desktop; with it the package leaves no dependency of its own behind.
cp "$deb" "$root/corvane.deb"
within apt-get -qq install -y --no-install-recommends libfile-mimeinfo-perl shared-mime-info \
  desktop-file-utils xdg-utils ca-certificates dbus fonts-dejavu-core pkexec polkitd >/dev/null
within apt-get -qq install -y --no-install-recommends \
  $(dpkg-deb -f "$deb" Depends | sed -E 's/\([^)]*\)//g; s/,/ /g') >/dev/null
everything >"$root/tmp/before"

within dpkg -i /corvane.deb >/dev/null
within corvanectl --version
for example in "$root"/usr/share/doc/corvane/examples/*.{lumora,relay,ko_eeprom}; do
  within corvanectl check "${example#"$root"}" >/dev/null
done
type_is() {
  local found; found=$(within xdg-mime query filetype "/usr/share/doc/corvane/examples/$1")
  echo "$1: $found"
  [ "$found" = "$2" ] || fail "$1 should be a $2"
}
type_is police.lumora application/x-corvane-lumora
type_is bilge-pump.relay application/x-corvane-pactor
type_is speed-controller.ko_eeprom application/x-corvane-koeeprom
[ "$(within xdg-mime query default application/x-corvane-lumora)" = \
  example.ortaline.Corvane.desktop ] || fail "nothing opens a light program"

within useradd -m somebody
within su somebody -c 'corvane -register' || fail "the window's program does not start"
echo "a day's work" >"$root/home/somebody/work.lumora"
within dpkg --purge corvane >/dev/null
everything >"$root/tmp/after"
left=$(comm -13 "$root/tmp/before" "$root/tmp/after" |
  grep -vE '^etc/(passwd|group|shadow|gshadow|subuid|subgid)' || true)
[ -z "$left" ] || fail "the package leaves behind: $left"
( cd "$root/home/somebody" && find . -type f )
[ -e "$root/home/somebody/work.lumora" ] || fail "the person's file is gone"
echo "The package installs, works, and leaves nothing behind."

port=47821
minisign -q -G -W -p "$work/ours.pub" -s "$work/ours.sec"
# One tree, in which only what knows the version is built again for the next one.
tree=$work/source
mkdir "$tree"
git -C "$source" archive HEAD | tar -x -C "$tree"
old=$(sed -n '1s/.*(\(.*\)).*/\1/p' "$tree/packaging/debian/changelog")
new=${old%.*}.$((${old##*.} + 1))
build() { # VERSION
  sed -i "1s/(.*)/($1)/" "$tree/packaging/debian/changelog"
  (
    cd "$tree"
    cmake --preset release -DCORVANE_BENCHMARKS=OFF \
      -DCORVANE_UPDATE_URL="https://localhost:$port/corvane.json" \
      -DCORVANE_UPDATE_KEY="$(sed -n 2p "$work/ours.pub")"
    cmake --build --preset release --target all
    umask 022
    cd build/release && cpack -G DEB -B "$work/$1"
  ) >"$work/log" 2>&1 || { tail -50 "$work/log"; fail "$1 can't be built"; }
  cp "$work/$1"/*.deb "$root/$1.deb"
}
build "$old"
build "$new"
python3 "$source/tests/updates/clean_root.py" "$root" "$root/$old.deb" "$root/$new.deb" "$work" "$port"
within dpkg --purge corvane >/dev/null
[ ! -e "$root/var/lib/corvane" ] || fail "the privileged side leaves its folder behind"
echo "The way from $old to $new is safe."
