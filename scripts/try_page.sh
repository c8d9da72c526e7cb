#!/usr/bin/env bash
# Does in a bare root what docs/installazione.md says, block by block, with the packages that scripts/pacchetti.sh has built
# last: one machine plays desk, host and database, on a network of its own that has the page's addresses and nothing else.
# Wants the rights of root, or sudo.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=scripts/bare_root.sh
. scripts/bare_root.sh

page=docs/installazione.md
base=$PWD/build/pagina-prova
root=$base/radice
built=build/pacchetti/esito
as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
leave() {
  if [ -d "$root" ]; then "${as_root[@]}" rm -rf --one-file-system -- "$root"; fi
}
trap leave EXIT

[ -d "$built" ] || { echo "try_page.sh: non c'è nulla in $built: scripts/pacchetti.sh" >&2; exit 1; }
leave
mkdir -p "$base"
packages=("$built"/liblumoscad1_*.deb "$built"/lumoscad_*.deb)
servers=apt-utils,gpg,gpg-agent,odbc-postgresql,odbcinst,openssh-client,openssh-server,postgresql-15,unattended-upgrades
make_bare_root "$root" "$(wanted_by "${packages[@]}"),$servers" "$base/mmdebstrap.log" ||
  { tail -n 20 "$base/mmdebstrap.log"; exit 1; }
"${as_root[@]}" mkdir -p "$root/root/pacchetti"
"${as_root[@]}" cp "${packages[@]}" "$root/root/pacchetti/"
"${as_root[@]}" cp demo/schema.sql "$root/root/"
"${as_root[@]}" unshare --net --mount --pid --fork --kill-child python3 scripts/run_page.py "$page" "$root"
