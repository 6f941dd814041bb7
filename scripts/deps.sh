#!/usr/bin/env bash
# Installs the Debian packages listed in scripts/packages.txt that are not yet
# installed, and generates the locales the tests use. Safe to run again.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)

missing=()
while read -r pkg; do
  case "$pkg" in ''|'#'*) continue ;; esac
  if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$pkg")
  fi
done < "$here/packages.txt"

sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi

if [ ${#missing[@]} -gt 0 ]; then
  echo "deps: installing ${missing[*]}"
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq "${missing[@]}"
fi

# Locales the locale-dependent tests switch to.
want_locales=("de_DE.UTF-8 UTF-8" "de_DE ISO-8859-1" "ja_JP.UTF-8 UTF-8" "ja_JP.EUC-JP EUC-JP" "en_US.UTF-8 UTF-8")
have=$(locale -a 2>/dev/null | tr 'A-Z' 'a-z' | sed 's/utf8/utf-8/')
gen=0
for l in "${want_locales[@]}"; do
  name=${l%% *}
  lname=$(echo "$name" | tr 'A-Z' 'a-z')
  if ! grep -qx "$lname" <<<"$have"; then
    if ! grep -qx "$l" /etc/locale.gen 2>/dev/null; then
      echo "$l" | "${sudo_cmd[@]}" tee -a /etc/locale.gen >/dev/null
    fi
    gen=1
  fi
done
if [ $gen -eq 1 ]; then
  "${sudo_cmd[@]}" locale-gen >/dev/null
fi
