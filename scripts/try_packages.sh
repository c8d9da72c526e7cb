#!/usr/bin/env bash
# Builds the packages and the tarball, builds them again from their source package in a directory of another name, and
# compares; asks lintian and abidiff; builds and plays the example programs from what is installed; installs the packages
# into a bare root, plays the demonstration from what was installed as an ordinary user who may write nothing of it, installs
# them over themselves, removes and purges them, and looks at what is left. Prints a table at the end.
#   scripts/try_packages.sh [--pronti]   with --pronti what scripts/pacchetti.sh has built last is tried, and not built anew
# The bare root is mmdebstrap's; where that one cannot fetch its packages, dpkg's own --root, with this machine's
# libraries, which LUMOSCAD_RADICE=dpkg takes from the first. Wants the rights of root, or sudo.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=scripts/bare_root.sh
. scripts/bare_root.sh

base=$PWD/build/pacchetti-prova
built=build/pacchetti/esito
sources=$PWD/build/pacchetti/sorgenti/lumoscad
as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
root=$base/radice
home=$base/persona
person=12345
packages=(liblumoscad1 liblumoscad-dev lumoscad lumoscad-demo)
processes=()
table=()

step() { printf '\n==== %s (%d s)\n' "$1" "$SECONDS"; }
row() { table+=("$(printf '%-14s %s' "$1" "$2")"); }
fail() { echo "prova dei pacchetti: $*" >&2; exit 1; }

leave() {
  local i
  for ((i = ${#processes[@]} - 1; i >= 0; i--)); do kill "${processes[i]}" 2>/dev/null || true; done
  if [ -d "$root" ]; then "${as_root[@]}" rm -rf --one-file-system -- "$root"; fi
}
trap leave EXIT

# ---- building, comparing, lintian

build_twice() {
  local other="build/pacchetti-in-una-cartella-con-un-nome-piu-lungo" differ=0 file
  step "pacchetti, due volte"
  scripts/pacchetti.sh
  # From the first one's sources: the tree may have changed meanwhile.
  scripts/pacchetti.sh "$other" "$(echo "$built"/*.dsc)"
  (cd "$built" && sha256sum -- *.deb *.tar.gz) >"$base/somme"
  (cd "$other/esito" && sha256sum --quiet -c "$base/somme") || differ=1
  if [ "$differ" = 1 ]; then
    for file in "$built"/*.deb "$built"/*.tar.gz; do
      cmp -s "$file" "$other/esito/${file##*/}" || diffoscope --text - "$file" "$other/esito/${file##*/}" | head -n 60 || true
    done
    fail "le due costruzioni non sono uguali"
  fi
  row ripetibili "$(wc -l <"$base/somme") file uguali da due cartelle (sha256)"
}

look_with_lintian() {
  step "lintian"
  local said
  said=$(lintian --pedantic --display-info --show-overrides "$built"/*.changes 2>"$base/lintian.errori") || true
  printf '%s\n' "$said"
  grep -v 'root privileges is not recommended' "$base/lintian.errori" >&2 || true
  if grep -vE '^(O: |N: |$)' <<<"$said"; then
    fail "lintian ha da ridire"
  fi
  row lintian "nulla, $(grep -c '^O: ' <<<"$said" || true) scelte motivate"
}

# The examples, each built from what is installed of the objects that the packages were made of, and played.
run_callers() {
  step "i programmi di esempio"
  python3 tests/end_to_end/esempi.py "$objects" "$sources" --tutti >"$base/esempi.log" ||
    { cat "$base/esempi.log"; fail "i programmi di esempio"; }
  cat "$base/esempi.log"
  row chiamanti "$(sed -nE 's/^esempio ([^:]+):.*/\1/p' "$base/esempi.log" | paste -sd';' | sed 's/;/; /g')"
}

compare_interface() {
  step "abidiff"
  local said
  said=$(python3 scripts/abi.py "$objects/lib/liblumoscad.so") || { echo "$said"; fail "l'interfaccia è cambiata"; }
  echo "$said"
  row abidiff "${said##*$'\n'}"
}

# ---- the bare root

make_root() {
  step "radice vuota"
  kind=mmdebstrap
  local file wanting=()
  for file in "$built"/{lib,}lumoscad*.deb; do
    [[ $file = *-dbgsym_* ]] || wanting+=("$file")
  done
  if [ "${LUMOSCAD_RADICE:-}" = dpkg ] ||
    ! make_bare_root "$root" "$(wanted_by "${wanting[@]}")" "$base/mmdebstrap.log"; then
    [ ! -e "$base/mmdebstrap.log" ] || tail -n 5 "$base/mmdebstrap.log"
    echo "senza mmdebstrap: dpkg --root"
    "${as_root[@]}" rm -rf --one-file-system -- "$root"
    kind="dpkg --root"
    "${as_root[@]}" mkdir -p "$root"/var/lib/dpkg/{info,updates} "$root/var/log"
    "${as_root[@]}" touch "$root/var/lib/dpkg/status" "$root/var/lib/dpkg/available"
    echo 1 | "${as_root[@]}" tee "$root/var/lib/dpkg/info/format" >/dev/null
  fi
  "${as_root[@]}" mkdir -p "$root/home/prova" "$root/pacchetti"
  for package in "${packages[@]}"; do
    "${as_root[@]}" cp "$built/${package}_"*.deb "$root/pacchetti/"
  done
  if [ "$kind" = mmdebstrap ]; then
    echo "prova:x:$person:$person::/home/prova:/bin/sh" | "${as_root[@]}" tee -a "$root/etc/passwd" >/dev/null
  fi
  mkdir -p "$home"
  "${as_root[@]}" chown "$person:$person" "$home"
  echo "con $kind"
}

dpkg_there() {
  if [ "$kind" = mmdebstrap ]; then
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive chroot "$root" dpkg "$@"
  else
    # The dependencies are this machine's.
    (cd "$root" && "${as_root[@]}" dpkg --root="$root" --force-depends "$@")
  fi >>"$base/dpkg.log" 2>&1 || { tail -n 20 "$base/dpkg.log"; fail "dpkg $*"; }
}

# All that there is, with its rights, its owner and its contents; of what dpkg and ldconfig keep for themselves the name.
contents() {
  # shellcheck disable=SC2016
  "${as_root[@]}" env -C "$root" sh -c '
    find . -xdev \( -path ./pacchetti -o -path ./proc -o -path ./sys -o -path ./dev -o -path ./tmp \) -prune -o \
      -printf "%p %y %m %U:%G %l\n" | sort
    find . -xdev \( -path ./pacchetti -o -path ./proc -o -path ./var/log -o -path ./var/lib/dpkg -o -path ./var/cache \
      -o -path ./etc/ld.so.cache \) -prune -o -type f -print0 | sort -z | xargs -0r sha256sum' |
    grep -vE '^\./var/(log|cache/ldconfig/aux-cache|lib/dpkg/(status-old|status|lock|available|triggers|diversions-old|statoverride-old))'
}

# as_person COMMAND: runs it in a shell as an ordinary user, to whom everything but the own directory and /tmp is read-only.
as_person() {
  local there=$root
  # shellcheck disable=SC2016
  if [ "$kind" = mmdebstrap ]; then
    "${as_root[@]}" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin unshare -m sh -c '
      set -e
      mount --bind "$1" "$1" && cd "$1" && mount -o remount,bind,ro "$1"
      mount -t proc proc "$1/proc"
      mount -t tmpfs -o mode=1777 tmpfs "$1/tmp"
      mount --bind "$2" "$1/home/prova"
      exec chroot --userspec="$3:$3" "$1" /usr/bin/env HOME=/home/prova LC_ALL=C.UTF-8 "DISPLAY=$4" \
        "LUMOSCAD_DATA=$LUMOSCAD_DATA" sh -c "cd && $5"' \
      sh "$root" "$home" "$person" "${DISPLAY:-}" "$1"
  else
    "${as_root[@]}" env -i setpriv --reuid="$person" --regid="$person" --clear-groups env -i HOME="$home" LC_ALL=C.UTF-8 \
      PATH="$there/usr/bin:/usr/bin:/bin" LD_LIBRARY_PATH="$there/usr/lib/$triplet" DISPLAY="${DISPLAY:-}" \
      sh -c "cd && ${1//\/usr\/lib\/lumoscad/$there/usr/lib/lumoscad}"
  fi
}

rows_of() { as_person "sqlite3 dimostrazione/contabilita.sqlite 'SELECT * FROM EVENTOCONTABILE ORDER BY EVENTOCONTABILEKEY'"; }

play() {
  step "la dimostrazione, da ciò che è installato"
  as_person 'touch /usr/bin/prova /usr/lib/lumoscad/prova' 2>/dev/null && fail "l'utente scrive fra i file installati"
  as_person '/usr/lib/lumoscad/demo/prepara.sh dimostrazione 40' || fail "la preparazione"
  [ "$(as_person '. dimostrazione/ambiente.sh; lumoscad -T TEST -H locale -D 01 -DB2SOURCE CONTABILITA -DB2SCHEMA main;
    sqlite3 dimostrazione/contabilita.sqlite "SELECT FILEXML FROM ERRORE WHERE ERROREKEY=100"')" = FILEccccc ] ||
    fail "il comando senza finestra"
  # shellcheck source=scripts/virtual_display.sh
  . scripts/virtual_display.sh
  start_virtual_display 1280x800 "$base"
  rows_of >"$base/righe_prima"
  as_person '. dimostrazione/ambiente.sh
    lumoscad -T BANCA /CREDITI -H locale -D 01 -DB2SOURCE CONTABILITA -DB2SCHEMA main; echo "stato $?"' \
    >"$base/risultato" 2>"$base/errori" &
  local program=$! changed
  processes+=("$program")
  "${as_root[@]}" env "DISPLAY=$DISPLAY" scripts/play_credits.sh "$base/crediti.png" "$program" ||
    { cat "$base/errori"; fail "la schermata"; }
  wait "$program" || fail "il programma"
  [ "$(cat "$base/risultato")" = "stato 0" ] || { cat "$base/risultato" "$base/errori"; fail "il risultato"; }
  rows_of >"$base/righe_dopo"
  changed=$(diff "$base/righe_prima" "$base/righe_dopo" | grep -c '^>' || true)
  [ "$changed" = 4 ] || fail "righe cambiate: $changed invece di 4"
  row dimostrazione "un utente comune, tutto in sola lettura: TEST, e la lista dei clienti con $changed righe cambiate"
}

install_and_remove() {
  local count
  contents >"$base/prima"
  step "installazione"
  dpkg_there -i "${deb_files[@]}"
  contents >"$base/installato"
  count=$(diff "$base/prima" "$base/installato" | grep -cE '^> \./[^ ]+ [fl] ' || true)
  row installati "in una radice di $kind: ${packages[*]}; $count file"
  play
  step "di nuovo gli stessi, poi via"
  dpkg_there -i "${deb_files[@]}"
  contents >"$base/di_nuovo"
  diff "$base/installato" "$base/di_nuovo" || fail "installati di nuovo, i file non sono gli stessi"
  row "di nuovo" "gli stessi file, con gli stessi contenuti e diritti"
  dpkg_there -r "${packages[@]}"
  contents >"$base/tolti"
  dpkg_there -P "${packages[@]}"
  contents >"$base/cancellati"
  diff "$base/prima" "$base/cancellati" || fail "resta qualcosa, o manca qualcosa"
  diff "$base/prima" "$base/tolti" || fail "resta qualcosa prima della cancellazione completa"
  [ -s "$home/dimostrazione/contabilita.sqlite" ] || fail "la dimostrazione dell'utente non c'è più"
  row tolti "$(wc -l <"$base/prima") voci come prima; di ciò che l'utente ha fatto manca nulla"
}

main() {
  "${as_root[@]}" rm -rf --one-file-system -- "$base"
  mkdir -p "$base"
  scripts/dependencies.sh --senza-server
  scripts/dependencies.sh --pacchetti
  scripts/dependencies.sh --chiamanti
  if [ "${1:-}" = --pronti ]; then
    [ -d "$built" ] || fail "non c'è nulla in $built: scripts/pacchetti.sh"
  else
    build_twice
  fi
  triplet=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
  objects=$sources/obj-$(dpkg-architecture -qDEB_HOST_GNU_TYPE)
  LUMOSCAD_DATA=$(date +%F)
  export LUMOSCAD_DATA
  deb_files=()
  for package in "${packages[@]}"; do
    file=$(basename "$built/${package}_"*.deb)
    row pacchetto "$(printf '%8d byte  %s' "$(stat -c %s "$built/$file")" "$file")"
    deb_files+=("/pacchetti/$file")
  done
  for file in "$built"/*.tar.gz; do
    row archivio "$(printf '%8d byte  %s' "$(stat -c %s "$file")" "${file##*/}")"
  done
  look_with_lintian
  compare_interface
  run_callers
  make_root
  [ "$kind" = mmdebstrap ] || deb_files=("${deb_files[@]/#/$root}")
  install_and_remove

  printf '\n==== pacchetti (%d s)\n' "$SECONDS"
  printf '%s\n' "${table[@]}"
}
main "$@"
exit
