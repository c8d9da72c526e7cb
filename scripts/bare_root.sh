# To be sourced. A Debian system in a directory, and what packages want to be there.
# shellcheck shell=bash

# wanted_by FILE.deb...: what packages want of others, by name, separated by commas; of alternatives the first. What they
# want of each other is left out.
wanted_by() {
  local file
  for file in "$@"; do
    dpkg-deb -f "$file" Depends
    echo ,
  done | tr ',' '\n' | sed -E 's/\|.*//; s/\(.*//; s/[[:space:]]//g' | sort -u | grep -vE '^(lib)?lumoscad|^$' | paste -sd,
}

# make_bare_root DIR PACKAGES LOG: fills DIR with this machine's release of Debian and with PACKAGES, as root.
make_bare_root() {
  local release
  release=$(. /etc/os-release && echo "$VERSION_CODENAME")
  # Lists that are a copy of some day are as good here as today's.
  # shellcheck disable=SC2154
  "${as_root[@]}" mmdebstrap --quiet --variant=minbase --include="$2" --aptopt='Acquire::Check-Valid-Until "false"' \
    --aptopt='Acquire::Check-Date "false"' "$release" "$1" >"$3" 2>&1
}
