#!/usr/bin/env python3
"""Checks the walk of docs/architecture.md, from a key press to the UPDATE statement.

Usage: check_walk.py [ROOT] | --self-test

The walk is every bullet list whose items begin with `file: function`. Each function must be defined (or, in an
interface, declared pure virtual) in its file; each item after the first of its list must be called by one before it; and
all items together may name at most ten files.
"""
import pathlib
import re
import sys

sys.dont_write_bytecode = True
from planted import planted  # noqa: E402

PAGE = "docs/architecture.md"
MOST_FILES = 10
ITEM = re.compile(r"^- `([\w./]+): ([\w:]+)`")
NOISE = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|(?<!\w)\'(?:\\.|[^\'\\\n])\'', re.DOTALL)
AFTER_PARAMETERS = re.compile(r"\s*(?:(?:const|noexcept|override|final)\b\s*)*(?:=\s*0\s*;|\{|:(?!:))")
PAIRS = {"(": ")", "{": "}"}


def closing(text, start):
    """The place behind the bracket that closes the one at `start`; the end of the text when there is none."""
    opening, depth = text[start], 0
    for place in range(start, len(text)):
        if text[place] == opening:
            depth += 1
        elif text[place] == PAIRS[opening]:
            depth -= 1
            if depth == 0:
                return place + 1
    return len(text)


def body(text, function):
    """What the definition of `function` holds, initialisers included; "" where it is pure virtual, None without one."""
    scope, _, name = function.rpartition("::")
    scope = scope.rpartition("::")[2]
    insides = []
    if scope:
        for found in re.finditer(rf"\b(?:class|struct)\s+{scope}\b[^;{{(]*{{", text):
            insides.append((found.end(), closing(text, found.end() - 1)))
    for found in re.finditer(rf"(?<![\w.>~]){name}\s*\(", text):
        qualified = text[: found.start()].endswith(scope + "::")
        if scope and not qualified and not any(a <= found.start() < b for a, b in insides):
            continue
        after = AFTER_PARAMETERS.match(text, closing(text, found.end() - 1))
        if not after:
            continue
        if after[0].endswith(";"):
            return ""
        start = after.end() - 1
        brace = text.find("{\n", start) if after[0].endswith(":") else start
        return text[start : closing(text, brace)] if brace >= 0 else None
    return None


def lists(page):
    """The walk as lists of (line, file, function)."""
    found, open_list = [], False
    for number, line in enumerate(page.splitlines(), 1):
        item = ITEM.match(line)
        if item:
            if not open_list:
                found.append([])
            found[-1].append((number, item[1], item[2]))
            open_list = True
        elif not line.startswith("  "):
            open_list = False
    return found


def check(root):
    """All that is wrong as (line, text), and how many items and files were looked at."""
    wrong, files, items = [], set(), 0
    for walk in lists((root / PAGE).read_text(encoding="utf-8")):
        before = []
        for number, file, function in walk:
            items += 1
            files.add(file)
            path = root / file
            if not path.is_file():
                wrong.append((number, f"there is no file {file}"))
                continue
            inside = body(NOISE.sub(" ", path.read_text(encoding="utf-8")), function)
            if inside is None:
                wrong.append((number, f"{file} does not define {function}"))
                continue
            name = function.rpartition("::")[2]
            if before and not any(re.search(rf"\b{name}\b", earlier) for earlier in before):
                wrong.append((number, f"nothing before it in the list calls {function}"))
            before.append(inside)
    if items == 0:
        wrong.append((0, "there is no walk"))
    if len(files) > MOST_FILES:
        wrong.append((0, f"{len(files)} files, more than {MOST_FILES}"))
    return wrong, items, len(files)


SOURCES = {
    "src/Window.cpp": "Window::Window() : list_(list) {\n  Press([] { list_.Key(1); });\n}\n"
                      "void Window::Filter() {\n  // Mouse()\n  Press([] { list_.Key(9); });\n}\n",
    "src/List.hpp": "class List {\n  virtual void Key(int code) = 0;\n  virtual void Mouse() = 0;\n};\n",
    "src/Grid.cpp": "struct Grid {\n  bool Inline() const { return Free(); }\n};\n"
                    "void Grid::Key(int code) {\n  if (code == 9) {\n    Write();\n  }\n}\n"
                    "void Grid::Write() { Inline(); }\nbool Free() { return Other(); }\n",
}
GOOD = ["src/Window.cpp: Window::Window", "src/List.hpp: List::Key", "src/Grid.cpp: Grid::Key", "src/Grid.cpp: Grid::Write",
        "src/Grid.cpp: Grid::Inline", "src/Grid.cpp: Free"]
BAD = {
    "a function that is gone": GOOD + ["src/Grid.cpp: Grid::Gone"],
    "a function that is only called": GOOD + ["src/Grid.cpp: Other"],
    "a function of another class": ["src/Grid.cpp: Other::Write"],
    "a file that is gone": GOOD + ["src/Gone.cpp: Gone::Key"],
    "a missing step": ["src/Window.cpp: Window::Window", "src/Grid.cpp: Grid::Write"],
    "a step that only a comment names": ["src/Window.cpp: Window::Filter", "src/List.hpp: List::Mouse"],
    "no walk": [],
    "too many files": GOOD[:1] + [f"src/File{i}.cpp: Key" for i in range(MOST_FILES)],
}


def self_test():
    """Plants walks in a tree of its own, and demands that the good one passes and that every other is refused."""
    failed = []
    sources = SOURCES | {f"src/File{i}.cpp": "void Key() {\n  Key();\n}\n" for i in range(MOST_FILES)}
    with planted(sources | {PAGE: ""}) as root:
        for what, walk in ({"the good walk": GOOD} | BAD).items():
            text = "".join(f"- `{item}`: a step,\n  told on two lines\n" for item in walk)
            (root / PAGE).write_text("Words.\n\n" + text + "\nWords.\n", encoding="utf-8")
            wrong = check(root)[0]
            if (len(wrong) != 1) == (what in BAD):
                failed.append(f"{what}: {wrong}")
    for line in failed:
        print(f"self-test failed: {line}")
    if not failed:
        print(f"self-test: {len(BAD)} bad walks were refused, and the good one was not")
    return 1 if failed else 0


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    root = pathlib.Path(arguments[0]) if arguments else pathlib.Path(__file__).resolve().parent.parent
    wrong, items, files = check(root)
    for number, text in wrong:
        print(f"{PAGE}:{number}: {text}")
    print(f"walk: {items} functions in {files} files checked, {len(wrong)} wrong")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
