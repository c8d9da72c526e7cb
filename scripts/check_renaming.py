#!/usr/bin/env python3
"""Shows that the commits between two states of the tree only rename.

Usage: check_renaming.py OLD NEW [PATH:NAME...] | --self-test

Every C++ file of OLD must stand in NEW, under its own name or another, with the same tokens but for identifiers, which
change by one mapping a file; the string literals of src/ and app/ must be the same, and the tests as many. A member
that is reached through an object, and a name that is called, may be called like a variable, so each role has a mapping
of its own. Where one name stood for two things of a role, and only one of them has another name now, or where two
things that never meet are called alike now, somebody has to read the file; PATH:NAME (as in OLD) says that somebody
has. Comments, blanks, the names of included files and the order of includes and of using-declarations don't count,
since a longer name moves them. What isn't C++ is listed for reading: no script can tell its names from its texts.
"""
import collections
import re
import subprocess
import sys

SOURCE = re.compile(r"\.(cpp|hpp|h|c)$")
PRODUCT = ("src/", "app/")
TEST_MACROS = {"TEST", "TEST_F", "TEST_P", "TYPED_TEST"}
SUITE_MACROS = {"INSTANTIATE_TEST_SUITE_P", "TYPED_TEST_SUITE"}
TOKEN = re.compile(
    r"""(?P<blank>\s+|\\\n)
      | (?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<include>\#\s*include\s*(?:"[^"\n]*"|<[^>\n]*>))
      | (?P<raw>(?:u8|[LuU])?R"(?P<delimiter>[^(\s]*)\(.*?\)(?P=delimiter)")
      | (?P<string>(?:u8|[LuU])?"(?:\\.|[^"\\\n])*")
      | (?P<char>(?:u8|[LuU])?'(?:\\.|[^'\\\n])+')
      | (?P<number>\.?\d(?:'?[\w.]|(?<=[eEpP])[+-])*)
      | (?P<name>[A-Za-z_]\w*)
      | (?P<sign>.)""",
    re.VERBOSE | re.DOTALL)
USING = re.compile(r"using(?: ::)?(?: \w+ : :)+ \w+ ;")


def tokens(text):
    """The (kind, text) of every token of `text`; together they are the whole of it."""
    return [(match.lastgroup if match.lastgroup != "delimiter" else "raw", match[0]) for match in TOKEN.finditer(text)]


def joined_literals(stream):
    """Neighbouring plain string literals as one: where a line ends is the formatter's business."""
    joined = []
    for kind, text in stream:
        if kind == "string" and text[0] == '"' and joined and joined[-1][0] == "string" and joined[-1][1][0] == '"':
            joined[-1] = (kind, joined[-1][1][:-1] + text[1:])
        else:
            joined.append((kind, text))
    return joined


def marked_tests(stream):
    """Sets the names of tests and of their suites apart: a suite may be called like a class that it tests."""
    suites, marked = set(), list(stream)
    for place, (_, text) in enumerate(stream):
        if text in TEST_MACROS or text in SUITE_MACROS:
            end = place + 5 if place + 4 < len(stream) else len(stream)
            for inner in range(place + 1, end):
                if marked[inner][0] == "name":
                    marked[inner] = ("test", marked[inner][1])
                    suites.add(marked[inner][1])
    for place in range(1, len(marked)):
        if marked[place][1] in suites and marked[place - 1][1] in ("class", "struct"):
            marked[place] = ("test", marked[place][1])
    return marked


def with_roles(stream):
    """Tells names by their role: what follows a dot, an arrow or a scope, and what a parenthesis follows."""
    result = []
    for place, (kind, text) in enumerate(stream):
        if kind == "name":
            before = "".join(text for _, text in stream[max(0, place - 2):place])
            if before.endswith((".", "->", "::")):
                kind = "member"
            if place + 1 < len(stream) and stream[place + 1][1] == "(":
                kind += " called"
        result.append((kind, text))
    return result


NAMES = ("test", "name", "member", "name called", "member called")


def shape(text):
    """What is the same of a file before and after a renaming, to find it under another name."""
    return tuple(("", kind) if kind in NAMES else (text, kind) for kind, text in Source(text).stream)


class Source:
    """What counts of one file: tokens without comments, and apart what the formatter may put into another order."""

    def __init__(self, text):
        kept = [token for token in tokens(text) if token[0] not in ("blank", "comment")]
        self.system_includes = sorted(t for k, t in kept if k == "include" and "<" in t)
        self.own_includes = sum(1 for k, t in kept if k == "include" and '"' in t)
        kept = joined_literals([token for token in kept if token[0] != "include"])
        self.literals = [t for k, t in kept if k in ("string", "raw")]
        self.tests = sum(1 for k, t in kept if k == "name" and t in TEST_MACROS)
        rest, self.usings = self.without_usings(marked_tests(kept))
        self.stream = with_roles(rest)

    @staticmethod
    def without_usings(stream):
        rest, usings, place = [], [], 0
        while place < len(stream):
            if stream[place][1] == "using":
                end = place
                while end < len(stream) and stream[end][1] != ";":
                    end += 1
                words = [text for _, text in stream[place:end + 1]]
                if USING.fullmatch(" ".join(words)):
                    usings.append(words)
                    place = end + 1
                    continue
            rest.append(stream[place])
            place += 1
        return rest, usings


def using_difference(old, new, mapping):
    """Why the using-declarations differ by more than `mapping`; None where they don't."""
    plain = {text: now for (kind, text), now in mapping.items() if kind != "test"}
    renamed = collections.Counter(" ".join(plain.get(word, word) for word in words) for words in old)
    present = collections.Counter(" ".join(words) for words in new)
    gone, come = list((renamed - present).elements()), list((present - renamed).elements())
    if sorted(len(words.split()) for words in gone) != sorted(len(words.split()) for words in come):
        return f"using-declarations differ: {gone} -> {come}"
    return None


def file_difference(old_text, new_text, homonyms=()):
    """Why the two texts differ by more than names, or None; and the names that changed."""
    old, new = Source(old_text), Source(new_text)
    mapping, back = {}, {}
    for place, (was, now) in enumerate(zip(old.stream, new.stream)):
        if was[0] != now[0]:
            return f"token {place}: {was[1]} -> {now[1]}", {}
        if was[0] not in NAMES:
            if was[1] != now[1]:
                return f"token {place}: {was[1]} -> {now[1]}", {}
            continue
        read = was[1] in homonyms and now[1] != was[1]
        if read:
            was = (was[0], f"the other {was[1]}")
        if mapping.setdefault(was, now[1]) != now[1]:
            return f"{was[1]} becomes {mapping[was]} and {now[1]}", {}
        if not read and back.setdefault((was[0], now[1]), was[1]) != was[1]:
            return f"{back[(was[0], now[1])]} and {was[1]} both become {now[1]}", {}
    if len(old.stream) != len(new.stream):
        return f"{len(old.stream)} tokens become {len(new.stream)}", {}
    if old.system_includes != new.system_includes or old.own_includes != new.own_includes:
        return "other includes", {}
    changed = {was[1]: now for was, now in mapping.items() if was[1] != now}
    return using_difference(old.usings, new.usings, mapping), changed


def literals_and_tests(tree):
    """The literals of the product and the number of tests of a tree, given as path -> text."""
    literals, tests = collections.Counter(), 0
    for path, text in tree.items():
        source = Source(text)
        tests += source.tests
        if path.startswith(PRODUCT):
            literals.update(source.literals)
    return literals, tests


def moves_between(old, new):
    """Old path -> new path of the files that have another name in `new`."""
    gone, come = sorted(set(old) - set(new)), sorted(set(new) - set(old))
    shapes = collections.defaultdict(list)
    for path in come:
        shapes[shape(new[path])].append(path)
    moves = {}
    for path in gone:
        candidates = shapes[shape(old[path])]
        if candidates:
            moves[path] = candidates.pop(0)
    return moves


def compare(old, new, homonyms=()):
    """All differences that are more than names, the names that changed, and the moves."""
    differences, names, moves = [], collections.Counter(), moves_between(old, new)
    for path in sorted(set(new) - set(moves.values()) - set(old)):
        differences.append(f"{path}: is new")
    for path in sorted(old):
        target = moves.get(path, path)
        if target not in new:
            differences.append(f"{path}: is gone")
        elif old[path] != new[target]:
            read = {name for place, name in (homonym.split(":") for homonym in homonyms) if place == path}
            why, changed = file_difference(old[path], new[target], read)
            names.update(changed.items())
            if why:
                differences.append(f"{path}: {why}")
    (old_literals, old_tests), (new_literals, new_tests) = literals_and_tests(old), literals_and_tests(new)
    for literal in old_literals - new_literals:
        differences.append(f"literal gone: {literal}")
    for literal in new_literals - old_literals:
        differences.append(f"literal come: {literal}")
    if old_tests != new_tests:
        differences.append(f"{old_tests} tests become {new_tests}")
    return differences, names, moves


def git(*arguments):
    return subprocess.run(["git", *arguments], check=True, capture_output=True).stdout.decode("utf-8", "replace")


def sources_at(commit):
    paths = [path for path in git("ls-tree", "-r", "-z", "--name-only", commit).split("\0") if SOURCE.search(path)]
    return {path: git("show", f"{commit}:{path}") for path in paths}


def others_between(old, new):
    """The files that aren't C++ and changed."""
    paths = git("diff", "--name-only", "--no-renames", "--diff-filter=d", "-z", old, new).split("\0")
    return [path for path in paths if path and not SOURCE.search(path)]


def self_test():
    """Plants what is more than a name, and demands that it is found; a true renaming must pass."""
    old = {
        "src/a.cpp": '#include "b.hpp"\n#include <string>\nusing std::string;\n'
                     'int esito = somma("uno" "due", \'"\', 1\'000), altro;\n',
        "tests/a_test.cpp": "class Lock : T {};\nTEST_F(Lock, Regge) { Lock2 lock; }\n",
    }
    renamed = {
        "src/c.cpp": '#include <string>\n#include "z.hpp"\n// why\nusing std::string;\n'
                     'int outcome =\n sum("unodue", \'"\', 1\'000), other;\n',
        "tests/a_test.cpp": "class Turn : T {};\nTEST_F(Turn, Holds) { Lock2 lock; }\n",
    }
    planted = [
        ("a literal", "src/c.cpp", "unodue", "unotre"),
        ("a character", "src/c.cpp", "'\"'", "'x'"),
        ("a number", "src/c.cpp", "1'000", "1'001"),
        ("a token", "src/c.cpp", "sum(", "sum(!"),
        ("a merged name", "src/c.cpp", "other;", "outcome;"),
        ("an include", "src/c.cpp", "<string>", "<vector>"),
        ("a using-declaration", "src/c.cpp", "using std::string;", ""),
        ("a split name", "tests/a_test.cpp", "TEST_F(Turn", "TEST_F(Other"),
        ("a test gone", "tests/a_test.cpp", "TEST_F(Turn, Holds) { Lock2 lock; }", ""),
        ("a lost file", "src/c.cpp", None, None),
    ]
    failed = [f"a renaming is refused: {why}" for why in compare(old, renamed)[0]]
    split = {**renamed, "src/c.cpp": renamed["src/c.cpp"].replace("other", "outcome2, altro")}
    twice = {**old, "src/a.cpp": old["src/a.cpp"].replace("altro", "altro, altro")}
    if not compare(twice, split)[0] or compare(twice, split, ["src/a.cpp:altro"])[0]:
        failed.append("a homonym passes unread, or is refused though it was read")
    for what, path, text, other in planted:
        tree = dict(renamed)
        if text is None:
            del tree[path]
        else:
            tree[path] = tree[path].replace(text, other)
        if not compare(old, tree)[0]:
            failed.append(f"{what} passes")
    for why in failed:
        print(f"check_renaming: {why}")
    if not failed:
        print(f"check_renaming: le {len(planted)} differenze messe apposta sono state trovate")
    return 1 if failed else 0


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    if len(arguments) < 2:
        print(__doc__)
        return 2
    old, new = sources_at(arguments[0]), sources_at(arguments[1])
    differences, names, moves = compare(old, new, arguments[2:])
    for why in differences:
        print(why)
    for path in others_between(*arguments[:2]):
        print(f"da leggere: {path}")
    print(f"{len(old)} file, {len(moves)} con altro nome, {len(names)} nomi cambiati, "
          f"{len(differences)} altre differenze")
    return 1 if differences or not old else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
