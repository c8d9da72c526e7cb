#!/usr/bin/env python3
"""Checks that every #include obeys the floors of docs/architecture.md.

Usage: controlla_strati.py [ROOT] | --autoverifica
"""
import pathlib
import re
import sys
import tempfile

# A floor may include itself and every floor to its right.
PIANI = ["entry", "handlers", "screens", "host", "database", "common", "platform"]

# What the rest of the component may see of an adapter, and the lowest floor that may see it. Every other header of
# an adapter belongs to its folder and to the composition root alone. An allowance that its lowest floor does not use is
# a violation too.
INTERFACCE = {
    "platform/ado/Ado.hpp": "database",
    "platform/xml/Nodo.hpp": "platform",
}
ADATTATORI = {"ado", "nexaro", "xml", "qt"}
# What everything may see and what sees nothing: it could stand in any program.
BASE = "platform/base/"
RADICE_COMPOSIZIONE = "src/Composizione.cpp"
# The one file of an adapter that chooses between its rooms (the folders in it). Otherwise a room sees itself and what
# stands beside the rooms, and what stands beside them sees none.
SCELTE = {"src/platform/nexaro/Transport.cpp"}

# Headers of libraries and of the operating system, with the one folder that may include them.
ESTERNI = [
    (re.compile(r"^(sql|sqlext|sqltypes|sqlucode|odbcinst(ext)?)\.h$"), ("src/platform/ado/",)),
    (re.compile(r"^libssh/"), ("src/platform/nexaro/ssh/",)),
    (re.compile(r"^pugi"), ("src/platform/xml/",)),
    (re.compile(r"^Q[A-Z]"), ("src/platform/qt/",)),
    (re.compile(r"^(unistd|fcntl|spawn|pwd|dlfcn|poll|signal|csignal|dirent)(\.h)?$|^sys/"), ("src/platform/", "app/")),
]
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def piano_di(percorso):
    """The floor of a path below src/, and its adapter folder or None."""
    parti = percorso.split("/")
    adattatore = parti[1] if parti[0] == "platform" and len(parti) > 2 and parti[1] in ADATTATORI else None
    return parti[0], adattatore


def stanza_di(percorso):
    """The room of a path below src/: the folder inside an adapter's, or None."""
    parti = percorso.split("/")
    return parti[2] if piano_di(percorso)[1] and len(parti) > 3 else None


def errore_interno(file, incluso):
    """Why `file` may not include the project's header `incluso`; None when it may."""
    if incluso.startswith("lumoscad/"):
        return None
    if file.startswith("app/") and "/" not in incluso:
        return None
    if not file.startswith("src/"):
        return "only the public headers (lumoscad/...) may be included here"
    if file == RADICE_COMPOSIZIONE:
        return None
    da, da_adattatore = piano_di(file.removeprefix("src/"))
    verso, verso_adattatore = piano_di(incluso)
    if verso not in PIANI:
        return "name the header from src/, floor first" if "/" not in incluso else f"unknown floor '{verso}'"
    if da not in PIANI:
        return f"a file outside the floors may include nothing of them (only {RADICE_COMPOSIZIONE} may)"
    if PIANI.index(verso) < PIANI.index(da):
        return f"an arrow upwards: {da} -> {verso}"
    if file.startswith("src/" + BASE) and not incluso.startswith(BASE):
        return f"{BASE} sees itself alone"
    if verso_adattatore is None:
        return None
    if verso_adattatore == da_adattatore:
        stanza = stanza_di(incluso)
        if stanza in (None, stanza_di(file.removeprefix("src/"))) or file in SCELTE:
            return None
        return f"the room platform/{verso_adattatore}/{stanza} is for itself"
    minimo = INTERFACCE.get(incluso)
    if minimo is None:
        return f"a private header of the adapter platform/{verso_adattatore}"
    if PIANI.index(da) > PIANI.index(minimo):
        return f"{da} lies below {minimo}, the lowest floor that may see {incluso}"
    return None


def errore_esterno(file, incluso):
    """Why `file` may not include the library header `incluso`; None when it may."""
    for forma, cartelle in ESTERNI:
        if forma.search(incluso) and not file.startswith(cartelle):
            return f"<{incluso}> belongs to {cartelle[0]} alone"
    return None


def permesso_usato(file, incluso):
    """The allowance that `file` needs for the project's header `incluso`, on the lowest floor that has it, or None."""
    piano, adattatore = piano_di(file.removeprefix("src/"))
    estraneo = file.startswith("src/") and adattatore != piano_di(incluso)[1]
    return incluso if estraneo and INTERFACCE.get(incluso) == piano else None


def controlla(radice):
    """All violations below `radice` as (file, line, text), and how much was looked at."""
    violazioni, usati, file_letti, inclusioni = [], set(), 0, 0
    for cartella in ("include", "src", "app"):
        for percorso in sorted((radice / cartella).rglob("*")):
            if percorso.suffix not in (".hpp", ".h", ".cpp"):
                continue
            file_letti += 1
            nome = percorso.relative_to(radice).as_posix()
            for numero, riga in enumerate(percorso.read_text(encoding="utf-8").splitlines(), 1):
                trovato = INCLUDE.match(riga)
                if not trovato:
                    continue
                inclusioni += 1
                interno = trovato[1] == '"'
                perche = (errore_interno if interno else errore_esterno)(nome, trovato[2])
                if perche:
                    violazioni.append((nome, numero, perche))
                elif interno:
                    usati.add(permesso_usato(nome, trovato[2]))
    for incluso in sorted(INTERFACCE.keys() - usati):
        violazioni.append((f"src/{incluso}", 0, f"a stale allowance: nothing on the floor {INTERFACCE[incluso]} needs it"))
    return violazioni, file_letti, inclusioni


def autoverifica():
    """Plants violations in a tree of its own and demands that exactly these are found."""
    albero = {
        "src/Composizione.cpp": '#include "platform/qt/QtDesktop.hpp"\n#include "entry/Voce.hpp"\n',
        "src/entry/Voce.cpp": '#include "handlers/Modulo.hpp"\n#include "lumoscad/LumoScadenze.hpp"\n#include <string>\n',
        "src/host/Salita.cpp": '#include <string>\n#include "handlers/Modulo.hpp"\n',
        "src/screens/Finestra.cpp": '#include <QWidget>\n',
        "src/platform/qt/Finestra.cpp": '#include <QWidget>\n#include "platform/Desktop.hpp"\n',
        "src/common/Dati.cpp": '#include "platform/ado/Ado.hpp"\n',
        "src/database/Dati.cpp": '#include "platform/ado/Ado.hpp"\n#include "platform/ado/Handles.hpp"\n',
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
    attese = {
        ("src/host/Salita.cpp", 2), ("src/screens/Finestra.cpp", 1), ("src/common/Dati.cpp", 1),
        ("src/database/Dati.cpp", 2), ("src/platform/xml/Nodo.cpp", 2), ("src/database/Lettura.cpp", 1),
        ("src/platform/nexaro/Transport.cpp", 2), ("src/platform/nexaro/File.cpp", 2),
        ("src/platform/nexaro/ssh/A.cpp", 3), ("src/platform/base/Testo.cpp", 2),
        ("src/platform/xml/Nodo.hpp", 0),
        ("src/handlers/Vicino.cpp", 1), ("app/lumoscad.cpp", 2), ("app/Processo.cpp", 2),
    }
    with tempfile.TemporaryDirectory() as cartella:
        radice = pathlib.Path(cartella)
        for nome, testo in albero.items():
            (radice / nome).parent.mkdir(parents=True, exist_ok=True)
            (radice / nome).write_text(testo, encoding="utf-8")
        trovate = {(nome, numero) for nome, numero, _ in controlla(radice)[0]}
    if trovate != attese:
        print(f"self-test failed: missed {sorted(attese - trovate)}, wrongly found {sorted(trovate - attese)}")
        return 1
    print(f"self-test: the {len(attese)} planted violations were found, and nothing else")
    return 0


def main(argomenti):
    if argomenti == ["--autoverifica"]:
        return autoverifica()
    radice = pathlib.Path(argomenti[0]) if argomenti else pathlib.Path(__file__).resolve().parent.parent
    violazioni, file_letti, inclusioni = controlla(radice)
    for nome, numero, perche in violazioni:
        print(f"{nome}:{numero}: {perche}")
    print(f"floors: {inclusioni} includes of {file_letti} files checked, {len(violazioni)} violations")
    if file_letti == 0:
        print("floors: no file found, nothing was checked")
        return 1
    return 1 if violazioni else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
