#!/usr/bin/env bash
# Builds the library from two copies of the sources in directories of different lengths, without the compiler's cache, and
# fails where the two differ in a byte.
set -euo pipefail
cd "$(dirname "$0")/.."

base=build/riproduci
rm -rf "$base"
for copy in "$base/uno" "$base/una-cartella-con-un-nome-piu-lungo"; do
  mkdir -p "$copy"
  git ls-files -co --exclude-standard -z | xargs -0 cp --parents -t "$copy"
  (
    cd "$copy"
    export CCACHE_DISABLE=1
    cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=g++ -DLUMOSCAD_TESTS=OFF \
      -DLUMOSCAD_BENCH=OFF >configura.log 2>&1 || { cat configura.log; exit 1; }
    cmake --build build --target lumoscad >compila.log 2>&1 || { tail -n 60 compila.log; exit 1; }
  )
done
cmp "$base"/*/build/lib/liblumoscad.so
echo "riproduci: le due librerie sono uguali, $(sha256sum <"$base/uno/build/lib/liblumoscad.so" | cut -c1-16)"
