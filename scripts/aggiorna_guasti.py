#!/usr/bin/env python3
"""Puts a table of faults, as a test has written it, into docs/guasti.md.

Usage: aggiorna_guasti.py SEZIONE TABELLA
  SEZIONE   name between the marks "<!-- inizio: SEZIONE -->" and "<!-- fine: SEZIONE -->"
  TABELLA   file with the table (build/tests/end_to_end/guasti_ssh.md for the section ssh)
"""

import pathlib
import sys


def main() -> int:
    if len(sys.argv) != 3:
        print(__doc__, file=sys.stderr)
        return 2
    sezione, tabella = sys.argv[1], pathlib.Path(sys.argv[2]).read_text(encoding="utf-8")
    pagina = pathlib.Path(__file__).resolve().parent.parent / "docs" / "guasti.md"
    testo = pagina.read_text(encoding="utf-8")
    inizio, fine = f"<!-- inizio: {sezione} -->\n", f"<!-- fine: {sezione} -->\n"
    if testo.count(inizio) != 1 or testo.count(fine) != 1:
        print(f"aggiorna_guasti.py: {pagina} non ha la sezione {sezione}", file=sys.stderr)
        return 1
    prima, resto = testo.split(inizio)
    dopo = resto.split(fine)[1]
    pagina.write_text(f"{prima}{inizio}\n{tabella.strip()}\n\n{fine}{dopo}", encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
