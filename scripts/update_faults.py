#!/usr/bin/env python3
"""Puts a table of faults, as a test has written it, into docs/guasti.md.

Usage: update_faults.py SEZIONE TABELLA
  SEZIONE   name between the marks "<!-- inizio: SEZIONE -->" and "<!-- fine: SEZIONE -->"
  TABELLA   file with the table (build/tests/end_to_end/guasti_ssh.md for the section ssh)
"""

import pathlib
import sys


def main() -> int:
    if len(sys.argv) != 3:
        print(__doc__, file=sys.stderr)
        return 2
    section, table = sys.argv[1], pathlib.Path(sys.argv[2]).read_text(encoding="utf-8")
    page = pathlib.Path(__file__).resolve().parent.parent / "docs" / "guasti.md"
    text = page.read_text(encoding="utf-8")
    begin, end = f"<!-- inizio: {section} -->\n", f"<!-- fine: {section} -->\n"
    if text.count(begin) != 1 or text.count(end) != 1:
        print(f"update_faults.py: {page} non ha la sezione {section}", file=sys.stderr)
        return 1
    before, rest = text.split(begin)
    after = rest.split(end)[1]
    page.write_text(f"{before}{begin}\n{table.strip()}\n\n{end}{after}", encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
