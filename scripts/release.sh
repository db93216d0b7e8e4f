#!/usr/bin/env bash
# Makes all that a server needs to publish a version: the package under its name, the manifest, and
# the signatures of both. The same again renews the manifest, which holds for some days only.
# Usage: scripts/release.sh PACKAGE.deb SECRET_KEY BASE_ADDRESS NOTES_FILE FOLDER
# Set in the environment: RELEASE_DAYS that the manifest holds (30), and RELEASE_TIME, seconds since
# 1970 that it is dated with (now).
set -euo pipefail
[ $# = 5 ] || { sed -n '4,6s/^# //p' "$0" >&2; exit 2; }
package=$1 key=$2 base=${3%/} notes=$4 folder=$5
issued=${RELEASE_TIME:-$(date +%s)}
expires=$((issued + ${RELEASE_DAYS:-30} * 24 * 60 * 60))
utc() { date -u -d "@$1" +%Y-%m-%dT%H:%M:%SZ; }

[ "$(dpkg-deb -f "$package" Package)" = corvane ] || { echo "$package is not Corvane" >&2; exit 1; }
version=$(dpkg-deb -f "$package" Version)
name=corvane_${version}_$(dpkg-deb -f "$package" Architecture).deb
new=$(mktemp -d)
trap 'rm -rf "$new"' EXIT
cp "$package" "$new/$name"
python3 - "$version" "$notes" "$base/$name" "$new/$name" "$(utc "$issued")" "$(utc "$expires")" \
  >"$new/corvane.json" <<'PYTHON'
import hashlib, json, sys
version, notes, url, package, issued, expires = sys.argv[1:]
with open(package, "rb") as file:
    content = file.read()
with open(notes, encoding="utf-8") as file:
    text = file.read().strip()
print(json.dumps({"version": version, "notes": text, "url": url, "size": len(content),
                  "sha256": hashlib.sha256(content).hexdigest(),
                  "issued": issued, "expires": expires}, indent=2, ensure_ascii=False))
PYTHON
minisign -S -q -s "$key" -m "$new/$name" -t "corvane $version $name"
minisign -S -q -s "$key" -m "$new/corvane.json" -t "corvane manifest $version"

# What a program may be asking for in this moment is never half of one and half of another: first
# what the new manifest speaks of, and the manifest last.
mkdir -p "$folder"
for file in "$name" "$name.minisig" corvane.json.minisig corvane.json; do
  cp "$new/$file" "$folder/.$file.new"
  mv "$folder/.$file.new" "$folder/$file"
done
echo "$folder holds version $version until $(utc "$expires")"
