#!/usr/bin/env bash
# Builds the Debian packages and the tarball that starts from any directory, and tells their sizes. The sources are copied
# first, since packages land beside the directory that they are built in.
#   scripts/pacchetti.sh [DIR [DSC]]   DIR is emptied; DIR/esito gets the packages (build/pacchetti), and DIR/sorgenti keeps
#                                      what they were built from: this tree, or the source package DSC
set -euo pipefail
umask 022
cd "$(dirname "$0")/.."

base=${1:-build/pacchetti}
case "$base" in
  build/?* | "$PWD"/build/?*) ;;
  *) echo "pacchetti.sh: $base non è sotto build/" >&2; exit 2 ;;
esac
scripts/dependencies.sh --pacchetti

rm -rf -- "$base"
mkdir -p "$base/sorgenti" "$base/esito"
base=$(cd "$base" && pwd)
copy=$base/sorgenti/lumoscad
if [ $# -gt 1 ]; then
  dpkg-source -x "$2" "$copy" >/dev/null
else
  mkdir "$copy"
  git ls-files -co --exclude-standard -z | xargs -0 cp --parents -t "$copy"
fi

# Nothing of what the person's shell says of compilers and languages gets into a package, nor the compiler's cache: what
# comes out of that names its source in another way, which the debug symbols and with them the build's number tell.
clean=(env -i "PATH=/usr/sbin:/usr/bin:/sbin:/bin" "HOME=$base" LC_ALL=C.UTF-8 CCACHE_DISABLE=1)
[ -z "${DEB_BUILD_OPTIONS:-}" ] || clean+=("DEB_BUILD_OPTIONS=$DEB_BUILD_OPTIONS")
log=$base/costruzione.log
cd "$copy"
"${clean[@]}" dpkg-buildpackage -us -uc >"$log" 2>&1 || { tail -n 60 "$log"; exit 1; }

# The same objects once more, put where they find each other, and in an order and with times that are always the same.
version=$(dpkg-parsechangelog -SVersion)
moment=$(dpkg-parsechangelog -STimestamp)
objects=obj-$(dpkg-architecture -qDEB_HOST_GNU_TYPE)
name=lumoscad-$version-linux-$(dpkg-architecture -qDEB_HOST_GNU_CPU)
{
  "${clean[@]}" cmake -S . -B "$objects" -DCMAKE_INSTALL_PREFIX=/usr/local -DCMAKE_INSTALL_LIBDIR=lib \
    -DCMAKE_SKIP_RPATH=OFF -DCMAKE_BUILD_WITH_INSTALL_RPATH=ON \
    -DLUMOSCAD_CARTELLA_DEMO=share/lumoscad/demo
  "${clean[@]}" cmake --build "$objects"
  "${clean[@]}" cpack --config "$objects/CPackConfig.cmake" -G TGZ -B "$base/cpack"
} >>"$log" 2>&1 || { tail -n 60 "$log"; exit 1; }
tar -C "$base/cpack" -xzf "$base/cpack/$name.tar.gz"
tar -C "$base/cpack" --sort=name --mtime="@$moment" --owner=0 --group=0 --numeric-owner --mode=u+rwX,go+rX,go-w \
  -cf - "$name" | gzip -9n >"$base/esito/$name.tar.gz"

cd "$base"
find sorgenti -maxdepth 1 -type f -exec mv -t esito {} +
rm -rf cpack
echo "pacchetti: in $base/esito"
cd esito
for file in *.deb *.tar.gz; do
  printf '%10d byte  %s\n' "$(stat -c %s "$file")" "$file"
done
