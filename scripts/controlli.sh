#!/usr/bin/env bash
# The checks that need no build: format, floors, the walk of docs/architecture.md, names, pages, shell scripts. All of
# them run; any that finds something fails the run.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1

esito=0
git ls-files -co --exclude-standard -z -- '*.cpp' '*.hpp' '*.h' | xargs -0 clang-format-14 --dry-run -Werror &&
  echo "formato: a posto" || esito=1
python3 scripts/controlla_strati.py --autoverifica && python3 scripts/controlla_strati.py || esito=1
python3 scripts/controlla_cammino.py --self-test && python3 scripts/controlla_cammino.py || esito=1
python3 scripts/check_renaming.py --self-test || esito=1
python3 scripts/check_names.py --self-test && python3 scripts/check_names.py || esito=1
python3 scripts/check_absences.py --self-test && python3 scripts/check_absences.py || esito=1
python3 scripts/check_docs.py --self-test && python3 scripts/check_docs.py || esito=1

mapfile -t script < <(git ls-files -co --exclude-standard -- '*.sh' .ci/run)
[ ${#script[@]} -gt 0 ] || { echo "shellcheck: nessuno script" >&2; esito=1; }
shellcheck -x "${script[@]}" && echo "shellcheck: ${#script[@]} script a posto" || esito=1
exit "$esito"
