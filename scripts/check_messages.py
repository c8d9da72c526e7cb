#!/usr/bin/env python3
"""Holds docs/messaggi.md and the texts of the code together.

A text of the code is a literal of src/, app/ or include/ with a word and a blank in it, but for those of NO_MESSAGE:
statements, labels of windows and the like. A text of the page is what stands between backticks at the beginning of a
table's row; "…" stands in it for what is put in at run time, and a blank for a line break. What stands between two "…"
must be made of whole literals of the code, one behind the other, and every text of the code must be one of those.

Usage: check_messages.py [ROOT] | --self-test
"""
import pathlib
import re
import sys

sys.dont_write_bytecode = True
from planted import planted, verdict  # noqa: E402
from check_names import COMMENT_OR_TEXT  # noqa: E402

PAGE = "docs/messaggi.md"
FOLDERS = ("src", "app", "include")
INSERTED = "…"

SQL = (r"[\W\d]*(SELECT|UPDATE|DELETE|WHERE|AND|OR|AS|SET|FROM|GROUP BY|ORDER BY|CASE|THEN|IS NULL|DESC|T WHERE|LIMIT"
       r"|FETCH FIRST|SHOW|PRAGMA|TITOLOIVA|EVENTOCONTABILE|MOVIMENTOCONTABILE|DATASCADENZA=|\.MOVIMENTOCONTABILE"
       r"|ERRORE WHERE|max_statement_time|MOV\.SERIE)\b.*|DATASCADENZA=.*|DATACONSEGNA=.*")
# Where a literal is no message, which (the whole literal must match), and what it is.
NO_MESSAGE = [
    ("src/database/", SQL, "statements"),
    ("src/platform/ado/", SQL, "statements"),
    ("src/platform/ado/Aftermath.cpp", r"in progress|KILL CONNECTION |password .* failed|autenticazione con .*",
     "a server's words"),
    ("src/platform/ado/Advice.cpp", r"(database|disk|session) .*|No space .*|la sessione .*", "what servers say"),
    ("src/platform/ado/ConnectionText.cpp", r"data source|user id|connect timeout", "keywords of a connection's text"),
    ("src/platform/ado/ResultReader.cpp", r"\d.*BC", "a value"),
    ("src/database/moduloDatabase.cpp", r"Provider=.*|;(User ID|Data Source)=", "the connection's text"),
    ("src/common/Festivita.cpp", r".*", "names of days"),
    ("src/platform/GestureTable.cpp", r"(?!Ripristina ).*", "the guide's chapter has them"),
    ("src/platform/qt/BankBox.cpp", r".*", "labels of a window"),
    ("src/platform/qt/CalendarPopup.cpp", r".*", "labels of a window"),
    ("src/platform/qt/DateKeys.cpp", r".*", "labels of a window"),
    ("src/platform/qt/HelpQt.cpp", r".*", "labels of a window"),
    ("src/platform/qt/List", r".*", "labels of a window"),
    ("src/platform/qt/SaveDialog.cpp", r".*", "labels of a window"),
    ("src/platform/qt/Look.cpp", r".*", "a style sheet"),
    ("src/platform/qt/MonthModel.cpp", r".*", "labels of a window"),
    ("src/platform/qt/SingleItemWindowQt.cpp", r".*", "labels of a window"),
    ("src/platform/qt/WaitQt.cpp", r"MS Sans Serif", "a font"),
    ("src/screens/CampiGriglia.cpp", r"nessuna ", "labels of a window"),
    ("src/screens/", r"LumoScad - .*|Nuova .*|(Consegna|Cons\.) prevista|Fatturato Euro|Scad\.? ?[Oo]rig\."
                     r"|(Des|S)eleziona tutto|Questa FormLumoScad .*|MS Sans Serif", "labels of a window"),
    ("src/screens/EsportaGriglia.cpp", r"Spunta |<.*>", "headings of a table, and its marks"),
    ("src/screens/FrasiVariazioni.cpp", r".*", "a line of the list of changes"),
    ("src/screens/EffettoVariazioni.cpp", r"senza data|nessuna banca", "names of bars"),
    ("src/screens/ResocontoGriglia.cpp", r"Per (banca|mese)", "headings of bars"),
    ("src/platform/nexaro/ProcessLock.cpp", r"lumoscad \w+ |the locks need .*", "what a lock is for"),
    ("src/platform/nexaro/OperationsTrial.cpp", r"Prova di LumoScad .*", "the content of a file"),
    ("src/platform/nexaro/ssh/SshLink.cpp", r"command -v |test -f | && .*", "the words of a shell"),
    ("src/common/TestoNota.cpp", r"lumoscad-\w+ ", "the first line of a file"),
    ("app/lumoscad.cpp", r"Uso: .*|lumoscad ", "the usage, which --aiuto shows"),
]

BETWEEN = re.compile(r"\s*(?://[^\n]*\s*|/\*.*?\*/\s*)*", re.S)
ESCAPED = re.compile(r"\\(x[0-9A-Fa-f]{1,2}|[0-7]{1,3}|.)", re.S)
WORD = re.compile(r"[^\W\d_]{2,}")
ROW = re.compile(r"^\| `([^`]+)`", re.M)


def plain(text):
    """A literal as the page writes it."""
    return re.sub(r"\s+", " ", ESCAPED.sub(lambda m: {"r": "\r", "n": "\n", "t": "\t"}.get(m[1], m[1]), text))


def literals(source):
    """Every (line, text) of a source; literals side by side are one."""
    found, end = [], None
    for match in COMMENT_OR_TEXT.finditer(source):
        token, line = match[0], source.count("\n", 0, match.start()) + 1
        if token.startswith("/") or re.search(r"^[ \t]*#\s*include[^\n]*$", source[:match.start()].split("\n")[-1]):
            continue
        text = token[3:-2] if token.startswith("R") else token[1:-1]
        if token.startswith('"') and end is not None and BETWEEN.fullmatch(source, end, match.start()):
            found[-1] = (found[-1][0], found[-1][1] + text)
        else:
            found.append((line, text))
        end = match.end() if token.startswith('"') else None
    return [(line, plain(text)) for line, text in found]


def speaks(text):
    """Whether a literal is a text for a person, or a piece of one."""
    return " " in text and WORD.search(text) is not None


def fits(text):
    """Whether a page's text may be made with this literal: any but single letters and short words."""
    return text != "" and (not any(c.isalnum() for c in text) or len(text) > 3 or speaks(text))


def used(piece, tiles, first, last):
    """Which of `tiles` stand in `piece` where it is made of whole ones; nothing where it cannot be made of them."""
    found = set()
    for text in {piece, " " + piece if first else piece, piece + " " if last else piece}:
        ahead, behind = {0}, {len(text)}
        for at in range(len(text)):
            if at in ahead:
                ahead.update(at + len(tile) for tile in tiles if text.startswith(tile, at))
        for at in range(len(text), -1, -1):
            if at in behind:
                behind.update(at - len(tile) for tile in tiles if text.endswith(tile, 0, at))
        if len(text) in ahead:
            found.update(tile for tile in tiles for at in ahead
                         if text.startswith(tile, at) and at + len(tile) in behind)
    return found


def check(root):
    """Everything that is wrong as (file, line, why), and how many texts were compared."""
    texts, tiles, seldom = {}, set(), set(range(len(NO_MESSAGE)))
    for path in sorted(path for folder in FOLDERS for path in (root / folder).rglob("*")):
        if path.suffix not in (".cpp", ".hpp", ".h"):
            continue
        name = path.relative_to(root).as_posix()
        for line, text in literals(path.read_text(encoding="utf-8")):
            excluded = [at for at, (place, form, _) in enumerate(NO_MESSAGE)
                        if speaks(text) and name.startswith(place) and re.fullmatch(form, text, re.S)]
            seldom -= set(excluded)
            if not excluded and fits(text):
                tiles.add(text)
                if speaks(text):
                    texts.setdefault(text, (name, line))
    wrong = [("scripts/check_messages.py", 0, f"NO_MESSAGE: nothing in {NO_MESSAGE[at][0]} matches {NO_MESSAGE[at][1]}")
             for at in sorted(seldom)]
    page, told = (root / PAGE).read_text(encoding="utf-8"), set()
    for row in ROW.finditer(page):
        pieces = row[1].split(INSERTED)
        for at, piece in enumerate(pieces):
            if piece == "" and len(pieces) > 1:
                continue
            found = used(piece, tiles, at == 0, at == len(pieces) - 1)
            told |= found
            if not found:
                wrong.append((PAGE, page.count("\n", 0, row.start()) + 1, f"not in the code: \"{piece}\""))
    wrong += [(name, line, f"not in {PAGE}: \"{text}\"") for text, (name, line) in texts.items() if text not in told]
    return wrong, len(texts)


def self_test():
    """Plants texts that differ in a tree of its own and demands that exactly these are found."""
    tree = {
        "src/host/Call.cpp": 'Tell("Il file " + Quote(name) +\n     " non c\'è" // why\n     " più.\\r\\n" + rest);\n'
                             'Tell("Il file è perduto.");\nTell("Il programma è fermo, ");\nOpen("data source");\n'
                             'Tell("Tutto bene " + name);\n#include "a file.hpp"\n',
        "src/host/Quote.cpp": 'return "«" + text + "»"; // "nessun testo qui"\n',
        "src/database/Read.cpp": 'Run("SELECT A FROM B");\n',
        PAGE: "| message |\n|---|\n| `Il file «…» non c'è più. …` | why |\n| `Il file è perduto` | why |\n"
              "| `Il programma è fermo, Tutto bene …` | why |\n| `Il file` | why |\n| `Il file «…» non c'è` | why |\n"
              "\nNothing of `this line` counts.\n",
    }
    with planted(tree) as root:
        found = {(name, line) for name, line, _ in check(root)[0] if not name.startswith("scripts")}
    # A full stop less, which leaves the code's text without a row; half of a text; a text that no row has.
    return verdict(found, {(PAGE, 4), ("src/host/Call.cpp", 4), (PAGE, 7), ("src/host/Call.cpp", 6)}, "texts")


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    root = pathlib.Path(arguments[0]) if arguments else pathlib.Path(__file__).resolve().parent.parent
    wrong, looked = check(root)
    for name, line, why in wrong:
        print(f"{name}:{line}: {why}")
    print(f"messages: {looked} texts of the code compared with {PAGE}, {len(wrong)} wrong")
    return 1 if wrong or not looked else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
