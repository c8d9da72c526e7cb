#!/usr/bin/env python3
"""Runs clang-tidy on as many processors as there are.

Usage: tidy.py [--deep] [BUILD_DIR [FOLDER...]]     BUILD_DIR holds a build that compiles each file by itself; default build, src and app
       tidy.py --self-test                          plants faults and sees them found

A file that passed is not looked at again until it, a header that it includes, its compile command, the configuration or
clang-tidy itself changes. The files of a target that are due are looked at as one unit, since most of the time goes into
their headers; a single one, and one that BUILD_DIR/alone.txt names, is looked at alone. A unit passes as a whole. The
analyser walks few paths of each function, as its own shallow mode does; with --deep it walks as many as it does by
default.
"""
import concurrent.futures
import contextlib
import dataclasses
import hashlib
import io
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TIDY = "clang-tidy-14"
CONFIGURATION = ROOT / ".clang-tidy"
GCC_WARNINGS = "--extra-arg=-Wno-unknown-warning-option"  # the commands may be gcc's
SHALLOW = [f"--extra-arg={word}" for word in ("-Xclang", "-analyzer-config", "-Xclang", "mode=shallow")]


def included_files(build: pathlib.Path) -> dict[str, list[str]]:
    """The files of the project that each object of `build` was compiled from, as its build system noted them."""
    listing = subprocess.run(["ninja", "-C", str(build), "-t", "deps"], capture_output=True, text=True).stdout
    objects: dict[str, list[str]] = {}
    current: list[str] = []
    for line in listing.splitlines():
        if line.startswith("    "):
            path = os.path.normpath(build / line.strip())
            if path.startswith(str(ROOT) + os.sep):
                current.append(path)
        elif ": #deps" in line:
            current = objects.setdefault(line.split(": #deps")[0], [])
    return objects


class Stamps:
    """What passed, by a digest of all that the answer depends on."""

    def __init__(self, folder: pathlib.Path, common: list[str]):
        self.folder = folder
        self.folder.mkdir(parents=True, exist_ok=True)
        version = subprocess.run([TIDY, "--version"], capture_output=True, text=True, check=True).stdout
        self.common = "\0".join([version, CONFIGURATION.read_text(), *common])
        self.digests: dict[str, str] = {}

    def digest_of_file(self, path: str) -> str:
        if path not in self.digests:
            try:
                self.digests[path] = hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest()
            except FileNotFoundError:
                self.digests[path] = "missing"
        return self.digests[path]

    def path(self, command: str, files: list[str]) -> pathlib.Path:
        text = "\0".join([self.common, command, *(f"{file} {self.digest_of_file(file)}" for file in sorted(set(files)))])
        return self.folder / hashlib.sha256(text.encode()).hexdigest()[:40]


@dataclasses.dataclass(frozen=True)
class Command:
    """How a source is compiled, and the object that it becomes."""

    directory: str
    text: str
    source: str
    object: str

    @property
    def companions(self) -> tuple[str, ...]:
        """Equal for sources that may be looked at together: those of one target with the same options."""
        words = [word for word in shlex.split(self.text) if word not in (self.object, self.source)]
        return (self.object.split(".dir/")[0] if ".dir/" in self.object else self.object, *words)


def commands_of(build: pathlib.Path) -> dict[str, Command]:
    commands = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        words = shlex.split(entry["command"])
        commands[entry["file"]] = Command(entry["directory"], entry["command"], entry["file"], words[words.index("-o") + 1])
    return commands


def units(due: list[str], commands: dict[str, Command], alone: set[str]) -> list[list[str]]:
    """What is looked at together, the largest first."""
    together: dict[tuple[str, ...], list[str]] = {}
    for source in due:
        together.setdefault((source,) if source in alone else commands[source].companions, []).append(source)
    return sorted(together.values(), key=lambda unit: sum(map(os.path.getsize, unit)), reverse=True)


def write_units(folder: pathlib.Path, joined: list[list[str]], commands: dict[str, Command]) -> dict[str, list[str]]:
    """Writes a file for each unit of several sources, which includes them, and the commands for these files."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    written, entries = {}, []
    for number, unit in enumerate(joined):
        # The analyser begins in the functions of the main file, and in those of the sources that it includes if its name
        # has this word in it; in a file of another name it would begin nowhere.
        path = folder / f"UnifiedSource-{number}.cpp"
        path.write_text("".join(f'#include "{source}" // NOLINT(bugprone-suspicious-include)\n' for source in unit))
        first = commands[unit[0]]
        entries.append({"directory": first.directory, "file": str(path), "command": first.text.replace(first.source, str(path))})
        written[str(path)] = unit
    (folder / "compile_commands.json").write_text(json.dumps(entries))
    return written


def look_at(commands: pathlib.Path, path: str, unit: list[str], arguments: list[str]) -> tuple[list[str], bool, str]:
    """Looks at `path`, which is the only source of `unit` or includes all of them."""
    words = [TIDY, "--quiet", "-p", str(commands), GCC_WARNINGS, *arguments]
    if path not in unit:
        headers = re.search(r"^HeaderFilterRegex: *'(.*)'$", CONFIGURATION.read_text(), re.MULTILINE)
        words.append("--header-filter=" + "|".join([headers[1], *(f"^{re.escape(source)}$" for source in unit)]))
    run = subprocess.run([*words, path], capture_output=True, text=True)
    return unit, run.returncode == 0, run.stdout if run.stdout.strip() else run.stderr


def run(build: pathlib.Path, folders: list[pathlib.Path], deep: bool, work: pathlib.Path) -> tuple[bool, int, int]:
    """Looks at what changed; returns whether all is well, how many files there are and how many were looked at."""
    commands = commands_of(build)
    included = included_files(build)
    arguments = [] if deep else SHALLOW
    stamps = Stamps(work / "stamps", arguments)
    headers = [str(path) for folder in ("src", "include") for path in (ROOT / folder).rglob("*.h*")]
    sources = sorted(str(path) for folder in folders for path in folder.rglob("*.cpp"))
    missing = [source for source in sources if source not in commands]
    if not sources or missing:
        print("tidy: no file to look at" if not sources else "tidy: not in the build: " + " ".join(missing), file=sys.stderr)
        return False, len(sources), 0

    due = {}
    for source in sources:
        stamp = stamps.path(commands[source].text, [source, *included.get(commands[source].object, headers)])
        if not stamp.exists():
            due[source] = stamp
    looks = units(list(due), commands, set((build / "alone.txt").read_text().split()))
    written = write_units(work / "units", [unit for unit in looks if len(unit) > 1], commands)
    paths = {unit[0]: path for path, unit in written.items()}
    well = True
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for unit, passed, output in pool.map(
                lambda unit: look_at(work / "units" if len(unit) > 1 else build, paths.get(unit[0], unit[0]), unit, arguments), looks):
            if passed:
                for source in unit:
                    due[source].touch()
            else:
                well = False
                print(output.rstrip())
                faulty = set(re.findall(r"^(.+?):\d+:\d+: (?:error|warning): ", output, re.MULTILINE))
                named = [source for source in unit if source in faulty] or unit
                print(f"tidy: to be mended: {' '.join(os.path.relpath(source, ROOT) for source in named)}")
    return well, len(sources), len(due)


def self_test() -> bool:
    """Planted faults are found, alone and in a unit; what passed is not looked at again until its header changes."""
    folder = ROOT / "build" / "tidy" / "self-test" / "src"  # headers are looked at by the folder that they are in
    shutil.rmtree(folder.parent, ignore_errors=True)
    folder.mkdir(parents=True)
    names = ["first.cpp", "second.cpp", "alone.cpp"]
    (folder / "build.ninja").write_text(
        "rule cc\n  command = clang++ -MD -MF $out.d -std=c++20 -c $in -o $out\n  depfile = $out.d\n  deps = gcc\n"
        + "".join(f"build planted.dir/{name}.o: cc {folder / name}\n" for name in names))
    (folder / "compile_commands.json").write_text(json.dumps([{
        "directory": str(folder), "file": str(folder / name),
        "command": f"clang++ -std=c++20 -o planted.dir/{name}.o -c {folder / name}"} for name in names]))
    (folder / "alone.txt").write_text(f"{folder / 'alone.cpp'}\n")

    def source(function: str, body: str) -> str:
        return f'#include "planted.hpp"\n\nint {function}(const Word* word) {{\n  {body}\n}}\n'

    def header(member: str) -> str:
        return f"#pragma once\n\nstruct Word {{\n  {member}\n}};\n\nint LengthOf(const Word* word);\nint SizeOf(const Word* word);\n"

    good = "return word == nullptr ? 0 : word->length;"
    null = "if (word == nullptr) {\n    return word->length;\n  }\n  return 1;"
    plain = {"planted.hpp": header("int length = 0;"), "first.cpp": source("LengthOf", good),
             "second.cpp": source("SizeOf", good), "alone.cpp": source("LengthOf", good)}
    old_null = {"planted.hpp": header("int length = 0;\n  const char* text = 0;")}

    def play(changed: dict[str, str]) -> tuple[bool, int, set[str]]:
        for name, text in changed.items():
            (folder / name).write_text(text)
        subprocess.run(["ninja", "-C", str(folder)], check=True, capture_output=True)
        with contextlib.redirect_stdout(io.StringIO()) as said, contextlib.redirect_stderr(said):
            well, _, looked_at = run(folder, [folder], False, folder.parent)
        blamed = {name for name in [*names, "lost.cpp"] for line in said.getvalue().splitlines()
                  if line.startswith("tidy: ") and line.endswith(name)}
        return well, looked_at, blamed

    steps = [
        ("a null pointer followed in the second of a unit", {**plain, "second.cpp": source("SizeOf", null)}, (False, 3, {"second.cpp"})),
        ("the same again", {}, (False, 2, {"second.cpp"})),
        ("plain files", plain, (True, 2, set())),
        ("the plain files again", {}, (True, 0, set())),
        ("a null pointer followed in one alone", {"first.cpp": source("LengthOf", null)}, (False, 1, {"first.cpp"})),
        ("the first file plain again", plain, (True, 0, set())),
        ("a variable that begins like a constant",
         {"first.cpp": source("LengthOf", "const int None = 0;\n  return word == nullptr ? None : word->length;")}, (False, 1, {"first.cpp"})),
        ("the first file plain once more", plain, (True, 0, set())),
        ("a header with a null of the old kind", old_null, (False, 3, {"second.cpp", "alone.cpp"})),
        ("the plain header again", plain, (True, 0, set())),
        ("two of a unit with the same name", {"first.cpp": source("SizeOf", good) + "\n", "second.cpp": source("SizeOf", good) + "\n"},
         (False, 2, {"second.cpp"})),
        ("a file that is not compiled", {**plain, "lost.cpp": source("LengthOf", good)}, (False, 0, {"lost.cpp"})),
    ]
    wrong = [f"{name}: {found}, not {wanted}" for name, changed, wanted in steps if (found := play(changed)) != wanted]
    for line in wrong:
        print("tidy: self-test: " + line, file=sys.stderr)
    if not wrong:
        print(f"tidy: self-test: {len(steps)} steps as they should be")
    return not wrong


def main() -> int:
    arguments = sys.argv[1:]
    if arguments == ["--self-test"]:
        return 0 if self_test() else 1
    deep = "--deep" in arguments
    rest = [argument for argument in arguments if argument != "--deep"]
    build = (ROOT / (rest[0] if rest else "build")).resolve()
    if not (build / "compile_commands.json").exists():
        print(f"tidy: {build}/compile_commands.json is missing", file=sys.stderr)
        return 1
    well, total, looked_at = run(build, [ROOT / folder for folder in rest[1:] or ["src", "app"]], deep, ROOT / "build" / "tidy")
    if well:
        print(f"tidy: {total} files, nothing found ({looked_at} looked at now)")
    return 0 if well else 1


if __name__ == "__main__":
    sys.exit(main())
