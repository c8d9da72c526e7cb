#!/usr/bin/env bash
# Installs the Debian packages that building, testing and demonstrating need. Nothing happens when all are there.
#   scripts/dependencies.sh                 everything
#   scripts/dependencies.sh --senza-server  without the servers of the tests, which Debian would start as services
#   scripts/dependencies.sh --chiamanti     only what callers in other languages and the interface's pages want
#   scripts/dependencies.sh --pacchetti     only what builds packages, looks at them and tries them in a bare root
#   scripts/dependencies.sh --foglio        only the spreadsheet in which a saved list is opened
set -euo pipefail

packages=(
  # compilers and build
  g++ cmake ninja-build ccache pkg-config
  # checks
  clang clang-format-14 clang-tidy-14 libclang-rt-14-dev gcovr python3 shellcheck abigail-tools
  # libraries of the tests
  libgtest-dev libgmock-dev libbenchmark-dev
  # Qt's own way to a database, which the benchmarks compare with
  libqt6sql6-odbc
  # the sources of the locales under which the tests run
  locales
  # the database of the demonstration
  unixodbc odbcinst libsqliteodbc sqlite3
  # a virtual display, a window manager and hands to play with
  xvfb xauth xdotool imagemagick openbox fonts-dejavu-core
  # a session bus, the bus of the assistive tools, and a client of it
  dbus-daemon at-spi2-core python3-gi gir1.2-atspi-2.0
)

server=(odbc-postgresql postgresql-15 pgbouncer odbc-mariadb mariadb-server-core mariadb-client-core galera-4
  openssh-server openssh-client)
libraries=(qt6-base-dev libgl-dev unixodbc-dev libpugixml-dev libssh-dev)
packaging=(g++ cmake ninja-build pkg-config "${libraries[@]}" debhelper dpkg-dev fakeroot lintian mmdebstrap diffoscope-minimal
  abigail-tools)
case "${1:-}" in
  --senza-server) packages+=("${libraries[@]}") ;;
  --foglio) packages=(libreoffice-calc-nogui) ;;
  --pacchetti) packages=("${packaging[@]}") ;;
  --chiamanti) packages=(mono-mcs mono-runtime libmono-system4.0-cil libgtk-3-dev doxygen) ;;
  *) packages+=("${libraries[@]}" "${server[@]}") ;;
esac

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
  [ "$status" = installed ] || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
  echo "dipendenze: tutte presenti"
  exit 0
fi

echo "dipendenze: installo ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "dipendenze: servono i diritti di root, oppure sudo" >&2; exit 1; }
  as_root=(sudo)
fi
install_packages() {
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
}
# Package lists may be absent (a fresh machine) or too old to fetch from: both are mended by one update.
if ! compgen -G '/var/lib/apt/lists/*Packages*' >/dev/null; then
  "${as_root[@]}" apt-get update
fi
install_packages || { "${as_root[@]}" apt-get update && install_packages; }
