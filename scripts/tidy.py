#!/usr/bin/env python3
"""Runs clang-tidy, as many files at a time as there are processors.

Usage: tidy.py [--deep] [BUILD_DIR [FOLDER...]]     BUILD_DIR holds a build that compiles each file by itself; default build, src and app
       tidy.py --self-test                          plants faults and sees them found

A file that passed is not looked at again until it, a header that it includes, its compile command, the configuration or
clang-tidy itself changes. The analyser walks few paths of each function, as its own shallow mode does; with --deep it
walks as many as it does by default, which takes five times as long.
"""
import concurrent.futures
import contextlib
import hashlib
import io
import json
import os
import pathlib
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TIDY = "clang-tidy-14"
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
        self.common = "\0".join([version, (ROOT / ".clang-tidy").read_text(), *common])
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


def look_at(build: pathlib.Path, source: str, arguments: list[str]) -> tuple[str, bool, str]:
    run = subprocess.run([TIDY, "--quiet", "-p", str(build), GCC_WARNINGS, *arguments, source], capture_output=True, text=True)
    return source, run.returncode == 0, run.stdout if run.stdout.strip() else run.stderr


def run(build: pathlib.Path, folders: list[pathlib.Path], deep: bool, stamps_folder: pathlib.Path) -> tuple[bool, int, int]:
    """Looks at what changed; returns whether all is well, how many files there are and how many were looked at."""
    commands = {entry["file"]: entry for entry in json.loads((build / "compile_commands.json").read_text())}
    included = included_files(build)
    arguments = [] if deep else SHALLOW
    stamps = Stamps(stamps_folder, arguments)
    headers = [str(path) for folder in ("src", "include") for path in (ROOT / folder).rglob("*.h*")]
    sources = sorted((str(path) for folder in folders for path in folder.rglob("*.cpp")), key=os.path.getsize, reverse=True)
    missing = [source for source in sources if source not in commands]
    if not sources or missing:
        print("tidy: no file to look at" if not sources else "tidy: not in the build: " + " ".join(missing), file=sys.stderr)
        return False, len(sources), 0

    due = {}
    for source in sources:
        entry = commands[source]
        stamp = stamps.path(entry["command"], [source, *included.get(entry.get("output", ""), headers)])
        if not stamp.exists():
            due[source] = stamp
    well = True
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for source, passed, output in pool.map(lambda one: look_at(build, one, arguments), due):
            if passed:
                due[source].touch()
            else:
                well = False
                print(output.rstrip())
                print(f"tidy: {os.path.relpath(source, ROOT)} is to be mended")
    return well, len(sources), len(due)


def self_test() -> bool:
    """A planted fault is found, a mended file passes and is not looked at again until its header changes."""
    folder = ROOT / "build" / "tidy" / "self-test" / "src"  # headers are looked at by the folder that they are in
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    header, source = folder / "planted.hpp", folder / "planted.cpp"
    (folder / "build.ninja").write_text(
        f"rule cc\n  command = clang++ -MD -MF $out.d -std=c++20 -c $in -o $out\n  depfile = $out.d\n  deps = gcc\n"
        f"build planted.o: cc {source}\n")
    (folder / "compile_commands.json").write_text(json.dumps([{
        "directory": str(folder), "file": str(source), "output": "planted.o",
        "command": f"clang++ -std=c++20 -o planted.o -c {source}"}]))
    good = '#include "planted.hpp"\n\nint lengthOf(const Word* word) {\n  return word == nullptr ? 0 : word->length;\n}\n'
    null = '#include "planted.hpp"\n\nint lengthOf(const Word* word) {\n  if (word == nullptr) {\n    return word->length;\n  }\n  return 1;\n}\n'

    def play(text: str, member: str = "int length = 0;") -> tuple[bool, int]:
        header.write_text(f"#pragma once\n\nstruct Word {{\n  {member}\n}};\n\nint lengthOf(const Word* word);\n")
        source.write_text(text)
        subprocess.run(["ninja", "-C", str(folder)], check=True, capture_output=True)
        with contextlib.redirect_stdout(io.StringIO()):
            well, _, looked_at = run(folder, [folder], False, folder / "stamps")
        return well, looked_at

    steps = [
        ("a null pointer followed", play(null), (False, 1)),
        ("the same again", play(null), (False, 1)),
        ("a plain file", play(good), (True, 1)),
        ("the plain file again", play(good), (True, 0)),
        ("a header with a null of the old kind", play(good, "int length = 0;\n  const char* text = 0;"), (False, 1)),
        ("the plain header again", play(good), (True, 0)),
    ]
    wrong = [f"{name}: {found}, not {wanted}" for name, found, wanted in steps if found != wanted]
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
