#!/usr/bin/env python3
"""Checks the names declared in src/, app/ and include/.

Every word that a name above src/platform is made of stands in docs/glossario.md, and no truth value anywhere is named
with a prefix ("is", "has", "ha"). Names of scripts/given_names.txt are left alone. The casing of names is clang-tidy's
(.clang-tidy).

Usage: check_names.py [ROOT] | --self-test | --update
  --update  writes the glossary's table from English to Italian anew, as the tables before it want it
"""
import pathlib
import re
import sys

sys.dont_write_bytecode = True
from planted import planted  # noqa: E402

FOLDERS = ("include", "app", "src")
ENGLISH = "src/platform/"
GLOSSARY = "docs/glossario.md"
GIVEN = "scripts/given_names.txt"
TIDY = ".clang-tidy"
REVERSE_HEADING = "## English to Italian"

COMMENT_OR_TEXT = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"\((?:.|\n)*?\)"|"(?:\\.|[^"\\\n])*"|(?<![0-9a-fA-F])\'(?:\\.|[^\'\\\n])+\'', re.S)
DIRECTIVE = re.compile(r"^[ \t]*#(?:[^\n\\]|\\.|\\\n)*", re.M)
ATTRIBUTE = re.compile(r"\[\[[^\]]*\]\]")
TOKEN = re.compile(r"[A-Za-z_]\w*|\d[\w.']*|::|->|\.\.\.|&&|\|\||[<>=!+\-*/%&|^]=|\S")
NAME = re.compile(r"[A-Za-z_]\w*$")
WORD = re.compile(r"[A-Z]+(?![a-z])|[A-Z]?[a-z]+")
# The kinds of names whose casing clang-tidy leaves alone for no other reason than that they are given.
IGNORED = re.compile(r"identifier-naming\.(Class|Namespace|Parameter|Member)IgnoredRegexp, value: '([^']*)'")
PREFIXED = re.compile(r"(is|Is|has|Has|ha|Ha)(?=[A-Z])")

# Behind these words an identifier is used, not declared.
USES = set("""return else case goto throw new delete sizeof alignof decltype typeid co_return co_yield co_await not and
or using namespace typename operator public private protected friend template requires do in default
explicit""".split())
KEYWORDS = USES | set("""alignas asm auto bool break catch char class const constexpr constinit consteval continue
double dynamic_cast enum extern false final float for if inline int long mutable noexcept nullptr override register
reinterpret_cast short signed static static_assert static_cast struct switch this thread_local true try typedef union
unsigned using virtual void volatile while concept const_cast""".split())
TYPE_KEYWORDS = set("auto bool char const constexpr double float int long short signed unsigned void volatile".split())
BEHIND_NAME = {"(", "{", "=", ";", ",", ")", "[", ":", "}"}


def blanked(match):
    """The text of a match without anything but its line ends."""
    return re.sub(r"[^\n]", " ", match[0])


class Source:
    """The tokens of one file, each with the line that it stands in and whether it is glued to the one before."""

    def __init__(self, text):
        for form in (COMMENT_OR_TEXT, DIRECTIVE, ATTRIBUTE):
            text = form.sub(blanked, text)
        self.tokens, self.lines, self.glued = [], [], []
        line, seen = 1, 0
        for match in TOKEN.finditer(text):
            line += text.count("\n", seen, match.start())
            seen = match.start()
            self.tokens.append(match[0])
            self.lines.append(line)
            self.glued.append(match.start() > 0 and not text[match.start() - 1].isspace())

    def at(self, place):
        return self.tokens[place] if 0 <= place < len(self.tokens) else ""

    def is_name(self, place):
        token = self.at(place)
        return bool(NAME.match(token)) and token not in KEYWORDS

    def ends_type(self, place):
        """True where the token may be the last of a type. The format glues "&", "*" and ">" to the type before them."""
        token = self.at(place)
        if token in TYPE_KEYWORDS or self.is_name(place):
            return True
        return token in ("&", "&&", "*", ">", "...") and self.glued[place]

    def is_truth(self, place):
        """True where the type that ends at `place` is bool."""
        return self.at(place) == "bool" and self.at(place - 1) not in ("<", ",", "(")

    def bracketed(self, place):
        """The names behind the "[" at `place`, up to its "]"."""
        place += 1
        while self.at(place) not in ("]", ""):
            if self.is_name(place):
                yield place
            place += 1

    def qualified(self, place):
        """The names of "a::b::c" that begins at `place`."""
        yield place
        while self.at(place + 1) == "::" and self.is_name(place + 2):
            place += 2
            yield place

    def enumerators(self, place):
        """The names in the braces of an enumeration whose keyword stands at `place`."""
        while self.at(place) not in ("{", ";", ""):
            place += 1
        if self.at(place) != "{":
            return
        while self.at(place) not in ("}", ""):
            if self.at(place) in ("{", ",") and self.is_name(place + 1):
                yield place + 1
            place += 1

    def declared(self):
        """Every declared name as (place, is a truth value)."""
        for place, token in enumerate(self.tokens):
            before, behind = self.at(place - 1), self.at(place + 1)
            if token == "enum":
                yield from ((found, False) for found in self.enumerators(place))
            elif token == "[" and self.at(place - 1) in ("auto", "&", "&&") and behind != "]":
                if "auto" in self.tokens[max(0, place - 2):place]:
                    yield from ((found, False) for found in self.bracketed(place))
            elif not self.is_name(place):
                continue
            elif before in ("class", "struct", "union", "enum", "typename", "concept"):
                if behind not in (";", "::", "&", "*") and not self.is_name(place + 1):
                    yield place, False
            elif before in ("namespace", "using") and behind in ("{", "=", "::"):
                yield from ((found, False) for found in self.qualified(place))
            elif before == "[" and behind == "=":
                yield place, False
            elif self.ends_type(place - 1) and behind in BEHIND_NAME and before != "operator":
                yield place, self.is_truth(place - 1)


def words_of(name):
    """The words of a camel-case or underscored name in lower case; single letters are none."""
    return [word.lower() for word in WORD.findall(name) if len(word) > 1]


def rows(text, heading=None):
    """The cells of the table rows of a page, up to the reverse table or only behind `heading`."""
    if heading is None:
        text = text.partition(REVERSE_HEADING)[0]
    else:
        text = text.partition(heading)[2]
    for line in text.splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        if line.startswith("|") and len(cells) > 1 and not set(cells[0]) <= set("-: ") and cells[0] != "word":
            yield cells


def glossary_words(text):
    """The words of the glossary, each form a word of its own."""
    words = set()
    for cells in rows(text):
        words.update(word for form in cells[0].split(",") for word in form.strip().lower().split())
    for line in re.findall(r"^    (.*)$", text, re.M):
        words.update(line.lower().split())
    return words


def reverse(text):
    """The table from English to Italian that belongs to the tables of a glossary."""
    turned = {}
    for cells in rows(text):
        for english in cells[1].split(","):
            turned.setdefault(english.strip(), []).append(cells[0].split(",")[0].strip())
    return [f"| {english} | {', '.join(turned[english])} |" for english in sorted(turned, key=str.lower)]


def given_names(text):
    return {line.strip() for line in text.splitlines() if line.strip() and not line.startswith("#")}


def check(root):
    """Everything that is wrong below `root` as (where, why), and how many names were looked at."""
    page = (root / GLOSSARY).read_text(encoding="utf-8")
    words, given = glossary_words(page), given_names((root / GIVEN).read_text(encoding="utf-8"))
    known = words | {word for name in given for word in words_of(name)}
    wrong, names = [], 0
    for folder in FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            file = path.relative_to(root).as_posix()
            if path.suffix not in (".hpp", ".h", ".cpp"):
                continue
            source = Source(path.read_text(encoding="utf-8"))
            for place, truth in source.declared():
                name, where = source.tokens[place], f"{file}:{source.lines[place]}"
                names += 1
                if name in given:
                    continue
                missing = [word for word in words_of(name) if word not in known]
                if missing and not file.startswith(ENGLISH):
                    wrong.append((where, f"{name}: not in {GLOSSARY}: {', '.join(missing)}"))
                if truth and PREFIXED.match(name):
                    wrong.append((where, f"{name}: a truth value is named by what is true, without a prefix"))
    for number, line in enumerate((root / TIDY).read_text(encoding="utf-8").splitlines(), 1):
        for kind, pattern in IGNORED.findall(line):
            wrong += [(f"{TIDY}:{number}", f"{name}: left alone as {kind}, and not in {GIVEN}")
                      for name in pattern.strip("()").split("|") if name not in given]
    written = [f"| {' | '.join(cells)} |" for cells in rows(page, REVERSE_HEADING) if cells[0] != "English"]
    if written != reverse(page):
        wrong.append((GLOSSARY, "the table from English to Italian is not what the others give (--update writes it)"))
    return wrong, names


def self_test():
    """Plants names in a tree of its own and demands that exactly these are found."""
    page = ("| word | English | meaning |\n|---|---|---|\n| rata, rate | instalment | one of the payments |\n"
            "| scrivi, scritta | write | to put |\n\n    host xml\n\n" + REVERSE_HEADING +
            "\n\n| English | Italian |\n|---|---|\n| instalment | rata |\n| write | scrivi |\n")
    tree = {
        GLOSSARY: page,
        GIVEN: "# given\nparScadWhim\nisRataChanged\n",
        TIDY: "  - { key: readability-identifier-naming.MemberIgnoredRegexp, value: '(isRataChanged|isRataLost)' }\n",
        "src/common/Rate.hpp": "struct Rata {\n  int whimsy;\n  bool scritta_ = false;\n  bool haRate = false;\n"
                               "  bool isRataChanged;\n};\n// int comment;\nenum class Esito { Scritta, Lost };\n",
        "src/common/Rate.cpp": "void ScriviRata(const Host& host, std::string_view parScadWhim, Rata* bogus) {\n"
                               "  for (const auto& [rata, strange] : host.Many()) {\n"
                               "    use(a && other, \"int text;\");\n"
                               "    return lost;\n  }\n}\n",
        "src/platform/ado/Row.hpp": "int whatever;\nbool IsWhatever();\nbool issued;\n",
    }
    expected = {("src/common/Rate.hpp", 2), ("src/common/Rate.hpp", 4), ("src/common/Rate.hpp", 8),
                ("src/common/Rate.cpp", 1), ("src/common/Rate.cpp", 2), ("src/platform/ado/Row.hpp", 2),
                (TIDY, 1)}
    twice = {("src/common/Rate.hpp", 4), ("src/common/Rate.hpp", 8)}
    with planted(tree) as root:
        found = [(where.rpartition(":")[0], int(where.rpartition(":")[2])) for where, _ in check(root)[0]]
        (root / GLOSSARY).write_text(page.replace("| write | scrivi |\n", ""), encoding="utf-8")
        stale = [why for where, why in check(root)[0] if where == GLOSSARY]
    wanted = sorted(place for place in expected for _ in range(2 if place in twice else 1))
    if sorted(found) != wanted or len(stale) != 1:
        print(f"self-test failed: expected {wanted}, found {sorted(found)}; the stale table: {stale}")
        return 1
    print(f"self-test: the {len(wanted) + 1} planted names were found, and nothing else")
    return 0


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    root = pathlib.Path(__file__).resolve().parent.parent
    if arguments == ["--update"]:
        page = (root / GLOSSARY).read_text(encoding="utf-8")
        kept = page.partition(REVERSE_HEADING)[0]
        table = ["| English | Italian |", "|---|---|", *reverse(page)]
        (root / GLOSSARY).write_text(f"{kept}{REVERSE_HEADING}\n\n" + "\n".join(table) + "\n", encoding="utf-8")
        return 0
    wrong, names = check(pathlib.Path(arguments[0]) if arguments else root)
    for where, why in wrong:
        print(f"{where}: {why}")
    print(f"names: {names} declarations checked, {len(wrong)} wrong")
    return 1 if wrong or not names else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
