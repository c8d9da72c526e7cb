#!/usr/bin/env python3
"""Compares what the library offers to programs with the baseline of installazione/abi: functions, their types and the layout
of what the public headers define (abidiff), and the numbers of lumoscad.h, which no object holds.

Usage: abi.py LIBRARY [--renew] | --self-test LIBRARY
  --renew  writes the baseline anew. What would break a program that was built with it is refused, unless the library has
           another number in its name.
LIBRARY has debugging information. The baseline holds no paths and no private types, so that the build's directory, its
compiler and its options make no difference.
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
HEADERS = ROOT / "include/lumoscad"
BASELINE = ROOT / "installazione/abi/liblumoscad.abi"
NUMBERS = ROOT / "installazione/abi/numeri.txt"
PUBLIC_ONLY = ["--drop-private-types", "--exported-interfaces-only"]
ERROR, INCOMPATIBLE = 3, 8  # bits of abidiff's exit status
CHANGED = re.compile(r"changes summary: (?!0 Removed, 0 Changed)")
DEFINED = re.compile(r"^#define (LUMOSCAD_\w+) (\d+)", re.M)


def run(*command):
    if shutil.which(command[0]) is None:
        sys.exit(f"{command[0]} is missing (Debian: abigail-tools)")
    return subprocess.run([str(part) for part in command], capture_output=True, text=True, check=False)


def numbers():
    return dict(DEFINED.findall((HEADERS / "lumoscad.h").read_text(encoding="utf-8")))


def dump(library):
    """The baseline's text for a library."""
    done = run("abidw", "--headers-dir", HEADERS, *PUBLIC_ONLY, "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs",
               "--type-id-style", "hash", library)
    if done.returncode != 0 or "<function-decl" not in done.stdout:
        sys.exit(f"abidw: {done.returncode} {done.stderr}: is there debugging information in {library}?")
    # What it is linked with is the packages' concern.
    text = re.sub(r"  <elf-needed>.*?</elf-needed>\n", "", done.stdout, flags=re.S)
    return re.sub(r" path='[^']*?(src/[^']*)'", r" path='\1'", text)


def differences(library, baseline=BASELINE, known=None):
    """What is not as in the baseline, as text, and whether it would break a program."""
    done = run("abidiff", "--headers-dir2", HEADERS, *PUBLIC_ONLY, baseline, library)
    if done.returncode & ERROR:
        sys.exit(f"abidiff: {done.returncode} {done.stdout}{done.stderr}")
    # The tool leaves it to the reader what a changed type does to a program; here it counts as breaking it.
    text, broken = done.stdout, bool(done.returncode & INCOMPATIBLE or CHANGED.search(done.stdout))
    before = known if known is not None else dict(line.split() for line in NUMBERS.read_text(encoding="utf-8").splitlines())
    now = numbers()
    for name in sorted(before.keys() | now.keys()):
        if before.get(name) != now.get(name):
            text += f"{name}: {before.get(name, 'new')} -> {now.get(name, 'gone')}\n"
            broken = broken or name in before
    return text, broken


def soname(text):
    return re.search(r"soname='([^']*)'", text)[1]


def renew(library):
    text = dump(library)
    if BASELINE.exists():
        found, broken = differences(library)
        print(found, end="")
        if broken and soname(BASELINE.read_text(encoding="utf-8")) == soname(text):
            sys.exit("abi: this would break a program that was built with it, under the same name of the library")
    BASELINE.write_text(text, encoding="utf-8")
    NUMBERS.write_text("".join(f"{name} {number}\n" for name, number in numbers().items()), encoding="utf-8")
    print(f"abi: {BASELINE.relative_to(ROOT)} and {NUMBERS.relative_to(ROOT)} written")


def self_test(library):
    """Plants differences in a copy of the baseline and demands that each is found."""
    baseline = BASELINE.read_text(encoding="utf-8")
    planted = {
        "a function that is gone": (baseline.replace("lumoscad_voci", "lumoscad_vocio"), True),
        "a parameter of another type": (re.sub(r"(name='lumoscad_voce'.*?type-id=')\w+(' name='indice')",
                                               r"\g<1>95e97e5e\2", baseline, flags=re.S), True),
        "a function of another version node": (baseline.replace("version='LUMOSCAD_1'", "version='LUMOSCAD_0'"), True),
    }
    with tempfile.TemporaryDirectory() as folder:
        changed = pathlib.Path(folder) / "changed.abi"
        for what, (text, breaks) in planted.items():
            changed.write_text(text, encoding="utf-8")
            if text == baseline or differences(library, changed)[1] != breaks:
                sys.exit(f"self-test: not found: {what}")
    known = numbers()
    known["LUMOSCAD_CHIUSO"] = "99"
    if not differences(library, known=known)[1]:
        sys.exit("self-test: not found: a number that is another one")
    print(f"self-test: the {len(planted) + 1} planted differences were found")


def main(arguments):
    if arguments[:1] == ["--self-test"]:
        return self_test(arguments[1])
    if arguments[1:] == ["--renew"]:
        return renew(arguments[0])
    found, _ = differences(arguments[0])
    if found:
        sys.exit(found + "abi: not as in the baseline; where it is wanted: scripts/abi.py LIBRARY --renew")
    print("abi: as in the baseline")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
