#!/bin/sh
# Records anew what every command and screen does on the demonstration: tests/registratore/attesi. Look at the
# difference before committing it.
#   scripts/record.sh [BUILD]   build directory (build)
set -eu
cd "$(dirname "$0")/.."
folder=${1:-build}
cmake --build "$folder" --target registratore_test
LUMOSCAD_REGISTRA=1 QT_QPA_PLATFORM=offscreen "$folder/bin/registratore_test" --gtest_brief=1
git --no-pager diff --stat -- tests/registratore/attesi
