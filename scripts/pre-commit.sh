#!/usr/bin/env bash
# The cheap checks on what is about to be committed, exactly as it is staged: the format of the staged C++
# files, the staged scripts by shellcheck, and over the whole tree floors, names, absences, pages and messages. As a git
# hook: see CONTRIBUTING.md.
set -uo pipefail
cd "$(git rev-parse --show-toplevel)" || exit 1

tree=$(mktemp -d) || exit 1
trap 'rm -rf "$tree"' EXIT
git checkout-index --all --prefix="$tree/" || exit 1

staged() { git diff --cached --name-only --diff-filter=ACMR -z -- "$@"; }
mapfile -d '' -t sources < <(staged '*.cpp' '*.hpp' '*.h')
mapfile -d '' -t shells < <(staged '*.sh' .ci/run)
cd "$tree" || exit 1

failed=0
if [ ${#sources[@]} -gt 0 ]; then
  clang-format-14 --dry-run -Werror "${sources[@]}" || failed=1
fi
if [ ${#shells[@]} -gt 0 ]; then
  shellcheck -x "${shells[@]}" || failed=1
fi
for check in check_floors.py check_walk.py check_names.py check_absences.py check_docs.py check_messages.py; do
  python3 "scripts/$check" || failed=1
done
[ "$failed" -eq 0 ] || echo "pre-commit: nothing was committed; git commit --no-verify commits all the same" >&2
exit "$failed"
