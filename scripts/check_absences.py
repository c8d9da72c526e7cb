#!/usr/bin/env python3
"""Checks what the sources deliberately do without ("Invariants" in docs/architecture.md).

Usage: check_absences.py [ROOT] | --self-test
"""
import pathlib
import re
import sys

sys.dont_write_bytecode = True
from planted import planted, verdict  # noqa: E402
from check_names import COMMENT_OR_TEXT, blanked  # noqa: E402

ABOVE = tuple(f"src/{floor}/" for floor in ("entry", "handlers", "screens", "host", "database", "common"))

# What must not stand in files below these folders, and why.
ABSENT = [
    (re.compile(r"\b(double|float|stod|stof|strtod|atof|lround|setprecision)\b"),
     ABOVE + ("src/platform/ado/", "app/", "include/"),
     "money and numbers of the database never pass through floating point"),
    (re.compile(r"\b(std::j?thread|std::async|pthread_create|getaddrinfo_a|QThread::create|new QThread|QThreadPool|"
                r"QtConcurrent)\b"),
     ABOVE + ("src/platform/qt/", "src/platform/xml/", "src/Composizione.cpp", "app/"),
     "no thread knows windows, rows or requests"),
    (re.compile(r"\b(std::\w*mutex|std::condition_variable\w*|std::(lock_guard|unique_lock|scoped_lock)|QMutex)\b"),
     ABOVE + ("src/platform/qt/", "src/platform/xml/", "src/platform/Turn", "src/Composizione.cpp", "app/"),
     "a call waits for no lock of memory"),
    (re.compile(r"\b(syslog|openlog|sd_journal_\w+|qInstallMessageHandler)\b"), ("src/", "app/", "include/"),
     "there is no log"),
    (re.compile(r"\b(std::[ow]?fstream|fopen|freopen|O_CREAT|mkstemp)\b"),
     ABOVE + ("src/platform/qt/", "src/platform/ado/", "app/"),
     "files are written by the link's adapter and platform/FileLocale alone"),
    (re.compile(r"(?<![\w.>])(std::|::)?(system|popen|wordexp)\s*\("), ("src/", "app/", "include/"),
     "no shell is started"),
    (re.compile(r"\b(class|struct)\s+\w+(\s+final)?\s*:\s*(public\s+|private\s+)?(Form|frm|Griglia|Schermata)\w*"),
     ABOVE,
     "screens are composed: nothing derives from a screen or from the grid"),
    (re.compile(r"\b(Qt::Key_\w+|QShortcut|QKeySequence::[A-Z]\w+|setShortcut\()"), ("src/platform/qt/",),
     "keys are bound by the table of gestures alone"),
]
# The one file in which one of them stands on purpose.
AT_HOME = {"src/platform/qt/GestureKeys.cpp": "keys are bound by the table of gestures alone"}


def check(root):
    """Everything found as (file, line, why), and how many files were looked at."""
    wrong, looked = [], 0
    for folder in ("include", "src", "app"):
        for path in sorted((root / folder).rglob("*")):
            if path.suffix not in (".hpp", ".h", ".cpp"):
                continue
            looked += 1
            name = path.relative_to(root).as_posix()
            lines = COMMENT_OR_TEXT.sub(blanked, path.read_text(encoding="utf-8")).splitlines()
            for form, folders, why in ABSENT:
                if name.startswith(folders) and AT_HOME.get(name) != why:
                    wrong += [(name, number, why) for number, line in enumerate(lines, 1) if form.search(line)]
    return wrong, looked


def self_test():
    """Plants each of them in a tree of its own and demands that exactly these are found."""
    tree = {
        "src/common/Money.cpp": "double amount; // double is said here\nconst char* text = \"double\";\n",
        "src/platform/nexaro/Wait.cpp": "double seconds; std::thread waiter; std::mutex key; std::ofstream file;\n",
        "src/platform/qt/Window.cpp": "double width;\nstd::thread painter;\nstd::mutex key;\nstd::ofstream file;\n",
        "src/platform/qt/Keys.cpp": "case Qt::Key_F5:\nnew QShortcut(Keys(gesture), window);\naction.setShortcuts(keys);\n",
        "src/platform/qt/GestureKeys.cpp": "case Qt::Key_Backtab:\n",
        "src/platform/ado/Row.cpp": "auto value = std::stod(text);\nstd::thread watchdog;\n",
        "src/screens/FormOther.hpp": "class FormOther final : public FormBase {\nclass Other : public Window {\n",
        "app/main.cpp": "auto done = system(command);\nrunner.system(command);\nsyslog(1, text);\n",
    }
    wanted = {("src/common/Money.cpp", 1), ("src/platform/qt/Window.cpp", 2), ("src/platform/qt/Window.cpp", 3),
              ("src/platform/qt/Window.cpp", 4), ("src/platform/qt/Keys.cpp", 1), ("src/platform/qt/Keys.cpp", 2),
              ("src/platform/ado/Row.cpp", 1), ("app/main.cpp", 1),
              ("app/main.cpp", 3), ("src/screens/FormOther.hpp", 1)}
    with planted(tree) as root:
        found = {(name, number) for name, number, _ in check(root)[0]}
    return verdict(found, wanted, "words")


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    root = pathlib.Path(arguments[0]) if arguments else pathlib.Path(__file__).resolve().parent.parent
    wrong, looked = check(root)
    for place in sorted({place for _, places, _ in ABSENT for place in places}):
        if not list(root.glob(place.rstrip("/") + "*")):
            wrong.append((place, 0, "named here and not there"))
    for name, number, why in wrong:
        print(f"{name}:{number}: {why}")
    print(f"absences: {len(ABSENT)} looked for in {looked} files, {len(wrong)} found")
    return 1 if wrong or not looked else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
