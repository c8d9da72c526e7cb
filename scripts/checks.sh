#!/usr/bin/env bash
# The checks that need no build: format, floors, the walk of docs/architecture.md, names, pages, messages, shell
# scripts. All of them run; any that finds something fails the run.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1

status=0
git ls-files -co --exclude-standard -z -- '*.cpp' '*.hpp' '*.h' | xargs -0 clang-format-14 --dry-run -Werror &&
  echo "formato: a posto" || status=1
python3 scripts/check_floors.py --self-test && python3 scripts/check_floors.py || status=1
python3 scripts/check_walk.py --self-test && python3 scripts/check_walk.py || status=1
python3 scripts/check_renaming.py --self-test || status=1
python3 scripts/check_names.py --self-test && python3 scripts/check_names.py || status=1
python3 scripts/check_absences.py --self-test && python3 scripts/check_absences.py || status=1
python3 scripts/check_docs.py --self-test && python3 scripts/check_docs.py || status=1
python3 scripts/page_blocks.py --self-test && python3 scripts/page_blocks.py docs/installazione.md >/dev/null || status=1
python3 scripts/growth.py --self-test || status=1
python3 scripts/check_messages.py --self-test && python3 scripts/check_messages.py || status=1

mapfile -t scripts < <(git ls-files -co --exclude-standard -- '*.sh' .ci/run)
[ ${#scripts[@]} -gt 0 ] || { echo "shellcheck: nessuno script" >&2; status=1; }
shellcheck -x "${scripts[@]}" && echo "shellcheck: ${#scripts[@]} script a posto" || status=1
exit "$status"
