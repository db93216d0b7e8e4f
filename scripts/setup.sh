#!/usr/bin/env bash
# Installs what is missing of packaging/apt-packages.txt. Where it may not, it prints the list and
# stops with status 1.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
mapfile -t packages < <(sed -e 's/#.*//' -e '/^[[:space:]]*$/d' "$root/packaging/apt-packages.txt")

missing=()
if command -v dpkg-query >/dev/null; then
  for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
    [ "$status" = "install ok installed" ] || missing+=("$package")
  done
else
  missing=("${packages[@]}")
fi
[ ${#missing[@]} -eq 0 ] && exit 0

if ! command -v apt-get >/dev/null || [ "$(id -u)" -ne 0 ]; then
  echo "These packages are needed and missing. Install them, then run this again:" >&2
  echo "  ${missing[*]}" >&2
  exit 1
fi
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
