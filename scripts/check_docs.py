#!/usr/bin/env python3
"""Checks that what the pages name is there: tests, test programs, files, names of the code, links, and the version.

Looked at is what stands between backticks, outside of code blocks, in README.md, CONTRIBUTING.md, CHANGELOG.md and
docs/:
  `Suite.Test`, `Suite.*`   a test of that name (`Begins...` and `...Ends` stand for a part of one)
  `some_test`               a test program of that name
  `folder/File.cpp`         a file, from the root, from src/ or by its end; `folder/Name` stands for its sources
  `LongCamelCaseName`       a word of the sources; of two or three words only where a page is about the code
  `Type::member`            both are words of the sources
A `--gtest_filter=` anywhere on a page selects a test.
Besides, links within the project lead somewhere, and the newest release of CHANGELOG.md is CMakeLists.txt's version.

Usage: check_docs.py [ROOT] | --self-test
"""
import fnmatch
import os
import pathlib
import re
import sys

sys.dont_write_bytecode = True
from planted import planted  # noqa: E402

PAGES = ("README.md", "CONTRIBUTING.md", "CHANGELOG.md", "docs/**/*.md")
# These name settings of servers and drivers besides, which no source has.
ABOUT_OTHERS = {"docs/basi-dati.md", "docs/host.md", "docs/installazione.md", "docs/nexaro.md", "docs/integrazione.md", "docs/affidabilita.md",
                "docs/crescita.md"}
# Longer words of others.
FOREIGN = {"DateTimeStringFormat", "PerSourceMaxStartups"}
SOURCES = ("include", "src", "app", "demo", "bench", "tests", "scripts", "CMakeLists.txt", "test.sh", "demo.sh")
READ = (".cpp", ".hpp", ".h", ".c", ".py", ".sh", ".txt", ".sql", ".map")
ENDINGS = (".cpp", ".hpp", ".h", ".py", ".sh", ".sql", ".supp", ".md", ".txt", ".json", ".svg", ".png")

TEST = re.compile(r"\b(?:TEST|TEST_F|TEST_P|TYPED_TEST)\(\s*(\w+)\s*,\s*(\w+)\s*\)")
CODE_BLOCK = re.compile(r"^```.*?^```[^\n]*$|^(?: {4,}|\t)[^\n]*$", re.S | re.M)
QUOTED = re.compile(r"`([^`\n]+)`")
FILTER = re.compile(r"--gtest_filter=['\"]?([\w.*?:/-]+)")
LINK = re.compile(r"\]\(([^)\s]+)\)")
CAMEL = re.compile(r"[A-Z][a-z0-9]*(?:[A-Z0-9]+[a-z0-9]*)+$")
HUMP = re.compile(r"[A-Z][a-z0-9]+|[A-Z0-9]+(?![a-z])")
PLACEHOLDER = re.compile(r"\b[A-Z]{3,}\b|[<>*]|\.\.\.")


def blanked(match):
    return re.sub(r"[^\n]", " ", match[0])


def anchors(text):
    """The anchors of a page's headings."""
    found = set()
    for heading in re.findall(r"^#+ +(.*)$", text, re.M):
        plain = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading).strip().lower()
        found.add(re.sub(r"[^\w\- ]", "", plain).replace(" ", "-"))
    return found


class Tree:
    """What there is to be named."""

    def __init__(self, root):
        self.root, self.files, self.tests, self.words, self.programs = root, set(), {}, set(), set()
        for folder, folders, names in os.walk(root):
            # What is built is not gone into at all: other programs may be at work there.
            folders[:] = [name for name in folders if name not in (".git", "__pycache__")
                          and not (name == "build" and pathlib.Path(folder) == root)]
            for path in (pathlib.Path(folder, name) for name in names):
                name = path.relative_to(root).as_posix()
                if not path.is_file():
                    continue
                self.files.add(name)
                if name.startswith(SOURCES) and path.suffix in READ:
                    self.read(name, path.read_text(encoding="utf-8", errors="replace"))
        self.cases = {case for cases in self.tests.values() for case in cases}

    def read(self, name, text):
        if name.startswith("tests/"):
            for suite, case in TEST.findall(text):
                self.tests.setdefault(suite, set()).add(case)
        if name.endswith("CMakeLists.txt"):
            self.programs.update(re.findall(r"\b\w+_test\b", text))
        self.words.update(re.findall(r"\w+", text))

    def has_case(self, suite, case):
        cases = self.cases if suite is None else self.tests.get(suite, set())
        if case.startswith("..."):
            return any(known.endswith(case[3:]) for known in cases)
        if case.endswith("..."):
            return any(known.startswith(case[:-3]) for known in cases)
        return case in cases or (case == "*" and bool(cases))

    def has_file(self, name):
        name = name.removeprefix("./").rstrip("/")
        for candidate in (name, "src/" + name, "include/" + name):
            below = (candidate + "/", candidate + ".")
            if candidate in self.files or any(file.startswith(below) for file in self.files):
                return True
        return any(file.endswith("/" + name) for file in self.files)


def why_wrong(tree, page, token):
    """Why what `token` names is not there; None when it is, or when it names nothing of the project."""
    dotted = re.match(r"([A-Z]\w+)\.(\*|[A-Z]\w*(?:\.\.\.)?)$", token)
    if dotted:
        if tree.has_case(dotted[1], dotted[2]):
            return None
        if dotted[1] not in tree.tests and {dotted[1], dotted[2]} <= tree.words:
            return None  # a record and its field
        return "no such test"
    if re.match(r"\w+_test(_it)?$", token):
        return None if token.removesuffix("_it") in tree.programs or token in tree.words else "no such test program"
    path = re.match(r"[\w./+-]+$", token) and ("/" in token or token.endswith(ENDINGS))
    if path and not token.startswith(("/", "-", "...")):
        if token.split("/")[0] in ("build", "", "..") or PLACEHOLDER.search(token):
            return None
        known = token.endswith(ENDINGS) or tree.has_file(token.split("/")[0])
        return "no such file" if known and not tree.has_file(token) else None
    if re.match(r"\w+(::~?\w+)+(\(\))?$", token):
        missing = [part for part in re.findall(r"\w+", token) if part not in tree.words]
        return f"not in the sources: {', '.join(missing)}" if missing else None
    bare = token.removesuffix("()").replace("...", "")
    if CAMEL.match(bare):
        long = len(HUMP.findall(bare)) > 3
        if not long and page in ABOUT_OTHERS:
            return None
        if "..." in token:
            return None if tree.has_case(None, token) else "no test begins or ends so"
        return None if bare in tree.words | FOREIGN else "not in the sources"
    return None


def check_links(tree, page, text):
    """Every (line, link) of a page that leads nowhere."""
    for number, line in enumerate(text.splitlines(), 1):
        for target in LINK.findall(line):
            if re.match(r"[a-z]+:", target):
                continue
            file, _, anchor = target.partition("#")
            path = (tree.root / page).parent / file if file else tree.root / page
            if not path.exists():
                yield number, f"{target}: no such file"
            elif anchor and path.suffix == ".md" and anchor not in anchors(path.read_text(encoding="utf-8")):
                yield number, f"{target}: no such heading"


def check_filters(tree, text):
    """Every (line, why) of a page's filters that select nothing; what stands behind a "/" is a parameter's."""
    names = [f"{suite}.{case}" for suite, cases in tree.tests.items() for case in cases]
    for number, line in enumerate(text.splitlines(), 1):
        for pattern in FILTER.findall(line):
            if not pattern.strip(".") or "/" in pattern:
                continue
            if not any(fnmatch.filter(names, part) for part in pattern.split(":")):
                yield number, f"--gtest_filter={pattern}: selects no test"


def check_version(root):
    version = re.search(r"project\(\w+ VERSION ([\d.]+)", (root / "CMakeLists.txt").read_text(encoding="utf-8"))
    released = re.search(r"^## \[?(\d[\d.]*)", (root / "CHANGELOG.md").read_text(encoding="utf-8"), re.M)
    if not version or not released or version[1] != released[1]:
        said = f"newest release {released and released[1]}, CMakeLists.txt says {version and version[1]}"
        return [("CHANGELOG.md", said)]
    return []


def check(root):
    """Everything that is wrong as (where, why), and how many names were looked at."""
    tree = Tree(root)
    wrong, looked = check_version(root), 0
    for path in sorted({path for form in PAGES for path in root.glob(form)}):
        page = path.relative_to(root).as_posix()
        text = path.read_text(encoding="utf-8")
        for found in (check_links(tree, page, text), check_filters(tree, text)):
            wrong += [(f"{page}:{number}", why) for number, why in found]
        for number, line in enumerate(CODE_BLOCK.sub(blanked, text).splitlines(), 1):
            for token in QUOTED.findall(line):
                looked += 1
                why = why_wrong(tree, page, token)
                if why:
                    wrong.append((f"{page}:{number}", f"`{token}`: {why}"))
    return wrong, looked


def self_test():
    """Plants wrong names in a tree of its own and demands that exactly these are found."""
    good = ("`Rows.AreSorted` `Rows.*` `rows_test` `AreSor...` `...Sorted` `common/Rows` `Rows.hpp` `Rows::Sort`\n"
            "[there](docs/x.md#a-heading) `VERY_OTHER` `/tmp/Else` `build/Else.cpp` `SortedRows`\n"
            "    `NotReadHere.AtAll` --gtest_filter='Rows.*' --gtest_filter=...\n")
    bad = ["`Rows.AreGone`", "`Gone.*`", "`gone_test`", "`AreGo...`", "`common/Gone.hpp`", "`Rows::Gone`",
           "`RowsThatAreGone`", "[gone](docs/gone.md)", "[gone](docs/x.md#gone)", "`GoneRows`",
           "    x --gtest_filter='Gone.*'"]
    tree = {
        "CMakeLists.txt": "project(Rows VERSION 1.2.0)\n",
        "CHANGELOG.md": "## Unreleased\n\n## [1.1.0]\n",
        "src/common/Rows.hpp": "struct Rows { void Sort(); int SortedRows; };\n",
        "tests/CMakeLists.txt": "add(rows_test)\n",
        "tests/rows_test.cpp": "TEST(Rows, AreSorted) {}\n",
        "docs/x.md": "# A heading\n",
        "README.md": good + "".join(f"{token}\n" for token in bad),
    }
    with planted(tree) as root:
        found = sorted(where for where, _ in check(root)[0])
    first = good.count("\n") + 1
    wanted = sorted(["CHANGELOG.md"] + [f"README.md:{first + number}" for number in range(len(bad))])
    if found != wanted:
        print(f"self-test failed: missed {set(wanted) - set(found)}, wrongly found {set(found) - set(wanted)}")
        return 1
    print(f"self-test: the {len(wanted)} planted names were found, and nothing else")
    return 0


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    root = pathlib.Path(arguments[0]) if arguments else pathlib.Path(__file__).resolve().parent.parent
    wrong, looked = check(root)
    for where, why in wrong:
        print(f"{where}: {why}")
    print(f"pages: {looked} names checked, {len(wrong)} wrong")
    return 1 if wrong or not looked else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
