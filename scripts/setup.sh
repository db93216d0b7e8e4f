#!/usr/bin/env bash
# Installs what is missing of the packages that building, running and the short check need, and with
# --long those of the long check, too. Where it may not, it prints them and stops with status 1.
set -euo pipefail
packaging=$(cd "$(dirname "${BASH_SOURCE[0]}")/../packaging" && pwd)
lists=("$packaging/apt-packages.txt")
if [ "${1:-}" = --long ]; then lists+=("$packaging/apt-packages-long.txt"); fi
mapfile -t packages < <(sed -e 's/#.*//' -e '/^[[:space:]]*$/d' "${lists[@]}")

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
