#!/usr/bin/env python3
"""Takes the code blocks out of a page, so that a test can run them.

A block's first line gives it a name, and says what becomes of it:
    ```sh name=prova on=persona
  name=NAME     unlike any other of the page; every block of a page that is run has one
  KEY=VALUE...  whatever the test wants to know: `on`, who runs it; `file`, where its text is put; ...
Blocks that are only indented have no name and are not allowed.

Usage: page_blocks.py PAGE         lists the blocks
       page_blocks.py PAGE NAME    prints the text of one
       page_blocks.py --self-test
"""
import dataclasses
import pathlib
import re
import sys

sys.dont_write_bytecode = True

FENCE = re.compile(r"^```(?P<language>\w*) *(?P<settings>[^\n]*)\n(?P<text>.*?)^```$", re.S | re.M)
SETTING = re.compile(r"(\w+)=(\S+)")


@dataclasses.dataclass
class Block:
    name: str
    language: str
    settings: dict
    text: str
    line: int


def blocks(page):
    """The blocks of a page, in order. Raises ValueError where one has no name, or another's, or is only indented."""
    whole = pathlib.Path(page).read_text(encoding="utf-8")
    found, wrong = [], []
    for match in FENCE.finditer(whole):
        settings = dict(SETTING.findall(match["settings"]))
        line = whole.count("\n", 0, match.start()) + 1
        name = settings.pop("name", None)
        if name is None or any(other.name == name for other in found):
            wrong.append(f"{page}:{line}: {'no name' if name is None else 'a second ' + name}")
        found.append(Block(name, match["language"], settings, match["text"], line))
    rest = FENCE.sub(lambda match: "\n" * match[0].count("\n"), whole)
    if "```" in rest:
        wrong.append(f"{page}: a block that does not end")
    for number, line in enumerate(rest.splitlines(), 1):
        before = rest.splitlines()[number - 2].strip() if number > 1 else ""
        if line.startswith("    ") and not before:
            wrong.append(f"{page}:{number}: a block without a name")
    if wrong:
        raise ValueError("\n".join(wrong))
    return found


def self_test():
    from planted import planted
    tree = {"good.md": "Text\n\n```sh name=a on=root\necho a\n```\n\n- item\n  goes on\n\n```text name=b\n\n    c\n```\n",
            "nameless.md": "```sh\necho a\n```\n", "twice.md": "```sh name=a\n```\n```sh name=a\n```\n",
            "indented.md": "Text:\n\n    echo a\n", "open.md": "```sh name=a\necho a\n"}
    with planted(tree) as root:
        good = blocks(root / "good.md")
        if [(b.name, b.language, b.settings, b.text) for b in good] != [
                ("a", "sh", {"on": "root"}, "echo a\n"), ("b", "text", {}, "\n    c\n")]:
            print(f"self-test failed: {good}")
            return 1
        for bad in sorted(set(tree) - {"good.md"}):
            try:
                blocks(root / bad)
            except ValueError:
                continue
            print(f"self-test failed: {bad} has passed")
            return 1
    print("self-test: the blocks were found, and the four bad pages refused")
    return 0


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    if len(arguments) not in (1, 2):
        print(__doc__, file=sys.stderr)
        return 2
    try:
        found = blocks(arguments[0])
    except ValueError as error:
        print(error, file=sys.stderr)
        return 1
    if len(arguments) == 1:
        for block in found:
            settings = " ".join(f"{key}={value}" for key, value in block.settings.items())
            print(f"{block.name}\t{block.language}\t{settings}")
        return 0 if found else 1
    text = [block.text for block in found if block.name == arguments[1]]
    if not text:
        print(f"page_blocks.py: {arguments[0]} has no block {arguments[1]}", file=sys.stderr)
        return 1
    sys.stdout.write(text[0])
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
