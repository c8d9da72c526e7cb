#!/usr/bin/env python3
"""Checks that every #include obeys the floors of docs/architecture.md.

Usage: check_floors.py [ROOT] | --self-test
"""
import pathlib
import re
import sys

sys.dont_write_bytecode = True
from planted import planted, verdict  # noqa: E402

# A floor may include itself and every floor to its right.
FLOORS = ["faccia", "entry", "handlers", "screens", "host", "database", "common", "platform"]

# What the rest of the component may see of an adapter, and the lowest floor that may see it. Every other header of
# an adapter belongs to its folder and to the composition root alone. An allowance that its lowest floor does not use is
# a violation too.
INTERFACES = {
    "platform/ado/Ado.hpp": "database",
    "platform/ado/Aftermath.hpp": "database",
    "platform/ado/Facts.hpp": "database",
    "platform/xml/Nodo.hpp": "platform",
}
ADAPTERS = {"ado", "nexaro", "xml", "qt"}
# What everything may see and what sees nothing: it could stand in any program.
BASE = "platform/base/"
COMPOSITION_ROOT = "src/Composizione.cpp"
# The one file of an adapter that chooses between its rooms (the folders in it). Otherwise a room sees itself and what
# stands beside the rooms, and what stands beside them sees none.
CHOICES = {"src/platform/nexaro/Transport.cpp"}

# Headers of libraries and of the operating system, with the one folder that may include them.
EXTERNAL = [
    (re.compile(r"^(sql|sqlext|sqltypes|sqlucode|odbcinst(ext)?)\.h$"), ("src/platform/ado/",)),
    (re.compile(r"^libssh/"), ("src/platform/nexaro/ssh/",)),
    (re.compile(r"^pugi"), ("src/platform/xml/",)),
    (re.compile(r"^Q[A-Z]"), ("src/platform/qt/",)),
    (re.compile(r"^(unistd|fcntl|spawn|pwd|dlfcn|poll|signal|csignal|dirent)(\.h)?$|^sys/"), ("src/platform/", "app/")),
]
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def floor_of(path):
    """The floor of a path below src/, and its adapter folder or None."""
    parts = path.split("/")
    adapter = parts[1] if parts[0] == "platform" and len(parts) > 2 and parts[1] in ADAPTERS else None
    return parts[0], adapter


def room_of(path):
    """The room of a path below src/: the folder inside an adapter's, or None."""
    parts = path.split("/")
    return parts[2] if floor_of(path)[1] and len(parts) > 3 else None


def internal_error(file, included):
    """Why `file` may not include the project's header `included`; None when it may."""
    if included.startswith("lumoscad/"):
        return None
    if file.startswith("app/") and "/" not in included:
        return None
    if not file.startswith("src/"):
        return "only the public headers (lumoscad/...) may be included here"
    if file == COMPOSITION_ROOT:
        return None
    origin, origin_adapter = floor_of(file.removeprefix("src/"))
    target, target_adapter = floor_of(included)
    if target not in FLOORS:
        return "name the header from src/, floor first" if "/" not in included else f"unknown floor '{target}'"
    if origin not in FLOORS:
        return f"a file outside the floors may include nothing of them (only {COMPOSITION_ROOT} may)"
    if FLOORS.index(target) < FLOORS.index(origin):
        return f"an arrow upwards: {origin} -> {target}"
    if file.startswith("src/" + BASE) and not included.startswith(BASE):
        return f"{BASE} sees itself alone"
    if target_adapter is None:
        return None
    if target_adapter == origin_adapter:
        room = room_of(included)
        if room in (None, room_of(file.removeprefix("src/"))) or file in CHOICES:
            return None
        return f"the room platform/{target_adapter}/{room} is for itself"
    lowest = INTERFACES.get(included)
    if lowest is None:
        return f"a private header of the adapter platform/{target_adapter}"
    if FLOORS.index(origin) > FLOORS.index(lowest):
        return f"{origin} lies below {lowest}, the lowest floor that may see {included}"
    return None


def external_error(file, included):
    """Why `file` may not include the library header `included`; None when it may."""
    for pattern, folders in EXTERNAL:
        if pattern.search(included) and not file.startswith(folders):
            return f"<{included}> belongs to {folders[0]} alone"
    return None


def allowance_used(file, included):
    """The allowance that `file` needs for the project's header `included`, on the lowest floor that has it, or None."""
    floor, adapter = floor_of(file.removeprefix("src/"))
    foreign = file.startswith("src/") and adapter != floor_of(included)[1]
    return included if foreign and INTERFACES.get(included) == floor else None


def check(root):
    """All violations below `root` as (file, line, text), and how much was looked at."""
    violations, used, files_read, includes = [], set(), 0, 0
    for folder in ("include", "src", "app"):
        for path in sorted((root / folder).rglob("*")):
            if path.suffix not in (".hpp", ".h", ".cpp"):
                continue
            files_read += 1
            name = path.relative_to(root).as_posix()
            for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
                match = INCLUDE.match(line)
                if not match:
                    continue
                includes += 1
                internal = match[1] == '"'
                why = (internal_error if internal else external_error)(name, match[2])
                if why:
                    violations.append((name, number, why))
                elif internal:
                    used.add(allowance_used(name, match[2]))
    for included in sorted(INTERFACES.keys() - used):
        violations.append((f"src/{included}", 0, f"a stale allowance: nothing on the floor {INTERFACES[included]} needs it"))
    return violations, files_read, includes


def self_test():
    """Plants violations in a tree of its own and demands that exactly these are found."""
    tree = {
        "src/Composizione.cpp": '#include "platform/qt/QtDesktop.hpp"\n#include "entry/Voce.hpp"\n',
        "src/entry/Voce.cpp": '#include "handlers/Modulo.hpp"\n#include "lumoscad/LumoScadenze.hpp"\n#include <string>\n',
        "src/host/Salita.cpp": '#include <string>\n#include "handlers/Modulo.hpp"\n',
        "src/screens/Finestra.cpp": '#include <QWidget>\n',
        "src/platform/qt/Finestra.cpp": '#include <QWidget>\n#include "platform/Desktop.hpp"\n',
        "src/common/Dati.cpp": '#include "platform/ado/Ado.hpp"\n',
        "src/database/Dati.cpp": '#include "platform/ado/Aftermath.hpp"\n#include "platform/ado/Facts.hpp"\n#include "platform/ado/Handles.hpp"\n#include "platform/ado/Ado.hpp"\n',
        "src/platform/xml/Nodo.cpp": '#include <pugixml.hpp>\n#include "common/Dati.hpp"\n',
        "src/platform/base/Testo.cpp": '#include "platform/base/Testo.hpp"\n#include "platform/RuntimeError.hpp"\n',
        "src/platform/nexaro/Transport.cpp": '#include "platform/nexaro/ssh/A.hpp"\n#include <libssh/libssh.h>\n',
        "src/platform/nexaro/File.cpp": '#include "platform/nexaro/File.hpp"\n#include "platform/nexaro/ssh/A.hpp"\n',
        "src/platform/nexaro/ssh/A.cpp":
            '#include <libssh/libssh.h>\n#include "platform/nexaro/File.hpp"\n#include "platform/nexaro/cartella/B.hpp"\n',
        "src/database/Lettura.cpp": '#include <sql.h>\n',
        "src/handlers/Vicino.cpp": '#include "Modulo.hpp"\n',
        "app/lumoscad.cpp": '#include "lumoscad/LumoScadenze.hpp"\n#include "entry/Voce.hpp"\n#include "Processo.hpp"\n',
        "app/Processo.cpp": '#include <sys/prctl.h>\n#include <sql.h>\n',
    }
    expected = {
        ("src/host/Salita.cpp", 2), ("src/screens/Finestra.cpp", 1), ("src/common/Dati.cpp", 1),
        ("src/database/Dati.cpp", 3), ("src/platform/xml/Nodo.cpp", 2), ("src/database/Lettura.cpp", 1),
        ("src/platform/nexaro/Transport.cpp", 2), ("src/platform/nexaro/File.cpp", 2),
        ("src/platform/nexaro/ssh/A.cpp", 3), ("src/platform/base/Testo.cpp", 2),
        ("src/platform/xml/Nodo.hpp", 0),
        ("src/handlers/Vicino.cpp", 1), ("app/lumoscad.cpp", 2), ("app/Processo.cpp", 2),
    }
    with planted(tree) as root:
        found = {(name, number) for name, number, _ in check(root)[0]}
    return verdict(found, expected, "violations")


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    root = pathlib.Path(arguments[0]) if arguments else pathlib.Path(__file__).resolve().parent.parent
    violations, files_read, includes = check(root)
    for name, number, why in violations:
        print(f"{name}:{number}: {why}")
    print(f"floors: {includes} includes of {files_read} files checked, {len(violations)} violations")
    if files_read == 0:
        print("floors: no file found, nothing was checked")
        return 1
    return 1 if violations else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
