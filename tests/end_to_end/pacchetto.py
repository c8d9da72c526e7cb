#!/usr/bin/env python3
"""Makes the tarball of a build, unpacks it and uses it from directories that nobody foresaw; and looks at what the
packages of Debian are made from: the version, the symbols, the files, the licences and what each package wants.

Usage: pacchetto.py BUILD_DIRECTORY SOURCE_DIRECTORY VERSION
"""
import fnmatch
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile

AMBIENTE = {"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"}
PACCHETTI = ("liblumoscad1", "liblumoscad-dev", "lumoscad", "lumoscad-demo")


def esegui(*comando, **altro):
    esito = subprocess.run([str(parte) for parte in comando], capture_output=True, text=True, **altro)
    if esito.returncode != 0:
        sys.exit(f"{' '.join(map(str, comando))}: {esito.returncode}\n{esito.stdout}\n{esito.stderr}")
    return esito.stdout


def pretendi(vero, che):
    if not vero:
        sys.exit(f"non è così: {che}")


def spacchetta(costruzione, dove):
    """The one directory of the tarball, unpacked in `dove`."""
    esegui("cpack", "--config", costruzione / "CPackConfig.cmake", "-G", "TGZ", "-B", dove / "cpack")
    archivi = list((dove / "cpack").glob("*.tar.gz"))
    pretendi(len(archivi) == 1, f"un archivio, non {archivi}")
    with tarfile.open(archivi[0]) as archivio:
        archivio.extractall(dove / "aperto")
    shutil.rmtree(dove / "cpack")
    radici = list((dove / "aperto").iterdir())
    pretendi(len(radici) == 1 and archivi[0].name.startswith(radici[0].name), f"una cartella sola: {radici}")
    return radici[0]


def parte_ovunque(aperto, dove, costruzione, versione):
    """The program starts where it was unpacked, and from a copy of `bin` and `lib` alone; the build has no part in it."""
    for file in aperto.rglob("*"):
        if file.is_file() and not file.is_symlink():
            pretendi(str(costruzione).encode() not in file.read_bytes(), f"{file} nomina la cartella della costruzione")
    copia = dove / "una copia, altrove"
    for cartella in ("bin", "lib"):
        shutil.copytree(aperto / cartella, copia / cartella, symlinks=True)
    for radice in (aperto, copia):
        detto = esegui(radice / "bin/lumoscad", "--versione", cwd="/", env=AMBIENTE)
        pretendi(detto.strip().endswith(versione), f"{radice}: {detto}")
        usate = esegui("ldd", radice / "bin/lumoscad", cwd="/", env=AMBIENTE)
        pretendi(f"=> {radice}/" in usate.replace("bin/../", ""), f"la libreria accanto: {usate}")
    shutil.rmtree(copia / "lib")
    manca = subprocess.run([copia / "bin/lumoscad", "--versione"], capture_output=True, text=True, env=AMBIENTE, cwd="/")
    pretendi(manca.returncode != 0 and "liblumoscad.so" in manca.stderr, "senza lib non parte: la prova vede qualcosa")


def dimostrazione(aperto, dove):
    """A command on a demonstration that was prepared from what was unpacked."""
    esegui(next(aperto.rglob("prepara.sh")), dove, "20", env=AMBIENTE, cwd="/")
    comando = "-T TEST -H locale -D 01 -DB2SOURCE CONTABILITA -DB2SCHEMA main"
    scena = f'. "{dove}/ambiente.sh" && exec "{aperto}/bin/lumoscad" {comando}'
    pretendi(esegui("sh", "-c", scena, env=AMBIENTE, cwd="/") == "", "il comando riesce")
    scritto = esegui("sqlite3", dove / "contabilita.sqlite", "SELECT FILEXML FROM ERRORE WHERE ERROREKEY=100")
    pretendi(scritto == "FILEccccc\n", f"il comando scrive nella base dati, non «{scritto}»")


def righe(file):
    return [riga.strip() for riga in file.read_text(encoding="utf-8").splitlines() if riga.strip()]


def stessa_versione(debian, versione):
    prima = re.match(r"lumoscad \(([^)]+)\) ", (debian / "changelog").read_text(encoding="utf-8"))
    pretendi(prima and prima[1] == versione, f"debian/changelog dice {prima and prima[1]}, CMakeLists.txt {versione}")


def controlla_campi(debian):
    campi = (debian / "control").read_text(encoding="utf-8")
    pretendi(tuple(re.findall(r"^Package: (\S+)$", campi, re.M)) == PACCHETTI, "i quattro pacchetti")
    blocchi = {blocco.split("\n", 1)[0].removeprefix("Package: "): blocco for blocco in campi.split("\n\n")[1:]}
    for nome in ("liblumoscad1", "lumoscad", "lumoscad-demo"):
        pretendi("${shlibs:Depends}" in blocchi[nome], f"{nome}: le dipendenze sono calcolate")
    pretendi("Depends: libssh-4" in blocchi["liblumoscad1"], "la libreria che si carica da sé è fra le dipendenze")
    facoltativi = blocchi["liblumoscad1"].split("Recommends:")[1]
    for altro in ("odbc-postgresql", "odbc-mariadb", "libsqliteodbc", "qt6-wayland"):
        pretendi(altro in facoltativi, f"{altro} è facoltativo")
    copione = [file.name for file in debian.iterdir() if re.search(r"(pre|post)(inst|rm)$", file.name)]
    pretendi(not copione, f"nessun copione di installazione: {copione}")


def ogni_file_ha_un_pacchetto(aperto, debian):
    """A file of the installation belongs to exactly one package, or is said to belong to none."""
    forme = {elenco.name: [riga.split()[0] for riga in righe(elenco)]
             for elenco in [*debian.glob("*.install"), debian / "not-installed"]}
    pretendi(len(forme) == len(PACCHETTI) + 1, forme)
    usate = set()
    for file in aperto.rglob("*"):
        if file.is_dir():
            continue
        nome = "usr/" + file.relative_to(aperto).as_posix()
        # Debian's own places: the libraries by architecture, programs never among what all architectures share.
        nome = re.sub(r"^usr/lib/", "usr/lib/x86_64-linux-gnu/", nome).replace("share/lumoscad/demo", "lib/lumoscad/demo")
        sue = [(elenco, forma) for elenco, sue_forme in forme.items() for forma in sue_forme
               if fnmatch.fnmatch(nome, forma) or nome.startswith(forma + "/") or fnmatch.fnmatch(nome, forma + "/*")]
        pretendi(len({elenco for elenco, _ in sue}) == 1, f"{nome} sta in {sue}")
        usate.update(sue)
    inutili = {(elenco, forma) for elenco, sue in forme.items() for forma in sue} - usate
    pretendi(not inutili, f"forme senza file: {inutili}")


def stessi_simboli(aperto, debian, versione):
    libreria = next(aperto.rglob("liblumoscad.so." + versione))
    esportati = {riga.split()[-1].split("@")[0] for riga in esegui("nm", "-D", "--defined-only", libreria).splitlines()}
    elencati = {riga.split("@")[0] for riga in righe(debian / "liblumoscad1.symbols")
                if not riga.startswith(("*", "#", "liblumoscad.so."))}
    pretendi(esportati and esportati == elencati, f"debian/liblumoscad1.symbols: {esportati ^ elencati}")


def licenze_altrui(aperto, debian):
    testi = [next(aperto.rglob("licenze-altrui.txt")), debian / "copyright"]
    oggetti = [file for file in aperto.rglob("*") if file.is_file() and file.read_bytes()[:4] == b"\x7fELF"]
    pretendi(len({file.resolve() for file in oggetti}) == 4, oggetti)
    usate = {"libssh.so.4"}
    for file in oggetti:
        usate.update(re.findall(r"\(NEEDED\).*\[([^]]+)\]", esegui("readelf", "-dW", file)))
    usate.discard("liblumoscad.so.1")
    pretendi({"libQt6Widgets.so.6", "libodbc.so.2", "libc.so.6"} <= usate, usate)
    for testo in testi:
        mancano = {nome for nome in usate if nome not in testo.read_text(encoding="utf-8")}
        pretendi(not mancano, f"{testo.name} non dice la licenza di {mancano}")


def main(costruzione, sorgenti, versione):
    debian = sorgenti / "debian"
    stessa_versione(debian, versione)
    controlla_campi(debian)
    with tempfile.TemporaryDirectory(dir=costruzione, prefix="pacchetto-") as base_:
        base = pathlib.Path(base_)
        aperto = base / "un posto con blank"
        shutil.move(spacchetta(costruzione, base), aperto)
        ogni_file_ha_un_pacchetto(aperto, debian)
        licenze_altrui(aperto, debian)
        stessi_simboli(aperto, debian, versione)
        # The directory of the test itself lies below the build's.
        parte_ovunque(aperto, base, costruzione, versione)
        dimostrazione(aperto, base / "dimostrazione")
    print("pacchetto: versione, campi, file, simboli, archivio spostato e copiato, dimostrazione")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve(), sys.argv[3])
