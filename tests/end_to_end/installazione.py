#!/usr/bin/env python3
"""Installs the build, moves what was installed, and uses it from there as a calling program's developer would: by
find_package, by pkg-config and as a part of another project. Help, manual and completion are compared. The demonstration is prepared from the installed files, and
the installed program runs a command on it.

Usage: installazione.py BUILD_DIRECTORY SOURCE_DIRECTORY VERSION
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

PROGRAMMA = """#include "lumoscad/Host.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "lumoscad/lumoscad.h"

#include <cstdio>

int main() {
  char risultato[16] = "pieno";
  const size_t lungo = lumoscad_esegui("", risultato, sizeof risultato);
  lumoscad::LumoScadenze scadenze;
  std::printf("[%s] %zu [%s]\\n", risultato, lungo, scadenze.EseguiLumoScad("").c_str());
  return 0;
}
"""

PROGETTO = """cmake_minimum_required(VERSION 3.25)
project(Chiamante LANGUAGES CXX)
{trova}
add_executable(chiamante chiamante.cpp)
target_link_libraries(chiamante PRIVATE LumoScad::lumoscad)
"""


def esegui(*comando, attesi=(0,), **altro):
    esito = subprocess.run([str(parte) for parte in comando], capture_output=True, text=True, **altro)
    if esito.returncode not in attesi:
        sys.exit(f"{' '.join(map(str, comando))}: {esito.returncode}\n{esito.stdout}\n{esito.stderr}")
    return esito.stdout


def pretendi(vero, che):
    if not vero:
        sys.exit(f"non è così: {che}")


def etichette(file):
    """The dynamic section's entries of an object, by their tags."""
    voci = {}
    for riga in esegui("readelf", "-dW", file).splitlines():
        if "[" in riga:
            voci.setdefault(riga.split("(")[1].split(")")[0], []).append(riga.split("[")[1].rstrip("]"))
    return voci


def installa(costruzione, prefisso, *altro):
    esegui("cmake", "--install", costruzione, "--prefix", prefisso, *altro)


def file_in(prefisso):
    return sorted(str(file.relative_to(prefisso)) for file in prefisso.rglob("*") if not file.is_dir())


def controlla_elenco(prefisso, versione):
    presenti = file_in(prefisso)
    senza_lib = {file.split("liblumoscad", 1)[-1] for file in presenti if "liblumoscad" in file}
    pretendi(senza_lib == {".so", ".so." + versione.split(".")[0], ".so." + versione}, f"le librerie: {presenti}")
    for atteso in ("bin/lumoscad", "include/lumoscad/lumoscad.h", "include/lumoscad/Host.hpp",
                   "include/lumoscad/LumoScadenze.hpp", "/pkgconfig/lumoscad.pc", "/LumoScadConfig.cmake",
                   "/LumoScadConfigVersion.cmake", "/LumoScadTargets.cmake", "/LICENSE"):
        pretendi(any(file.endswith(atteso) for file in presenti), f"{atteso} fra {presenti}")
    pretendi(not any("demo" in file for file in presenti), "la dimostrazione non è fra ciò che nessuno ha chiesto")


def controlla_oggetti(prefisso, versione):
    libreria = next(prefisso.rglob("liblumoscad.so." + versione))
    voci = etichette(libreria)
    pretendi(voci["SONAME"] == ["liblumoscad.so." + versione.split(".")[0]], voci)
    pretendi("RUNPATH" not in voci and "RPATH" not in voci, f"la libreria non cerca altrove: {voci}")
    programma = etichette(prefisso / "bin/lumoscad")
    pretendi(programma.get("RUNPATH", [""])[0].startswith("$ORIGIN/"), programma)
    return libreria.parent


def con_cmake(dove, prefisso, cartella_lib):
    dove.mkdir()
    (dove / "chiamante.cpp").write_text(PROGRAMMA)
    (dove / "CMakeLists.txt").write_text(PROGETTO.format(trova="find_package(LumoScad 1.0 REQUIRED)"))
    esegui("cmake", "-S", dove, "-B", dove / "b", f"-DCMAKE_PREFIX_PATH={prefisso}")
    esegui("cmake", "--build", dove / "b")
    pretendi(esegui(dove / "b/chiamante") == "[] 0 []\n", "find_package")
    troppo = dove / "troppo"
    troppo.mkdir()
    (troppo / "chiamante.cpp").write_text(PROGRAMMA)
    (troppo / "CMakeLists.txt").write_text(PROGETTO.format(trova="find_package(LumoScad 2.0 REQUIRED)"))
    esegui("cmake", "-S", troppo, "-B", troppo / "b", f"-DCMAKE_PREFIX_PATH={prefisso}", attesi=(1,))
    pretendi(cartella_lib.is_dir(), cartella_lib)


def con_pkg_config(dove, cartella_lib):
    dove.mkdir()
    (dove / "chiamante.cpp").write_text(PROGRAMMA)
    ambiente = dict(os.environ, PKG_CONFIG_PATH=str(cartella_lib / "pkgconfig"))
    opzioni = esegui("pkg-config", "--cflags", "--libs", "lumoscad", env=ambiente).split()
    esegui("g++", "-std=c++17", "-Wall", "-Wextra", "-Wpedantic", "-Werror", dove / "chiamante.cpp", "-o",
           dove / "chiamante", *opzioni)
    ambiente["LD_LIBRARY_PATH"] = str(cartella_lib)
    pretendi(esegui(dove / "chiamante", env=ambiente) == "[] 0 []\n", "pkg-config")


def come_parte(dove, sorgenti):
    """Within another project: the library alone, without what concerns who builds the component."""
    dove.mkdir()
    (dove / "chiamante.cpp").write_text(PROGRAMMA)
    (dove / "CMakeLists.txt").write_text(PROGETTO.format(trova=f'add_subdirectory("{sorgenti}" lumoscad)'))
    esegui("cmake", "-G", "Ninja", "-S", dove, "-B", dove / "b", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON")
    comandi = (dove / "b/compile_commands.json").read_text()
    pretendi("Composizione.cpp" in comandi and "chiamante.cpp" in comandi, "la libreria si costruisce")
    for estraneo in ("-Werror", "-Wconversion", "ccache", "gtest", "/app/", "/demo/", "/bench/", "/tests/"):
        pretendi(estraneo not in comandi, f"{estraneo} non entra nel progetto altrui")
    pretendi("lumoscad_test" not in esegui("ninja", "-C", dove / "b", "-t", "targets", "all"), "nessuna prova")


def stesse_opzioni(prefisso):
    """Help, manual pages and completion name the same options and settings."""
    aiuto = esegui(prefisso / "bin/lumoscad", "--aiuto")
    pagine = "".join(re.sub(r"\\f[A-Z]", "", (prefisso / f"share/man/{pagina}").read_text()).replace("\\-", "-")
                     for pagina in ("man1/lumoscad.1", "man7/lumoscad-nexaro.7"))
    completamento = (prefisso / "share/bash-completion/completions/lumoscad").read_text()

    def opzioni(testo):
        return set(re.findall(r"(?<![\w-])--[a-z][a-z-]*", testo))

    def variabili(testo):
        return set(re.findall(r"\b(?:NEXARO|LUMOSCAD|SSH|QT)_[A-Z_]+|\b(?:WAYLAND_)?DISPLAY", testo))

    pretendi(len(opzioni(aiuto)) > 9 and opzioni(aiuto) == opzioni(pagine), opzioni(aiuto) ^ opzioni(pagine))
    pretendi(opzioni(aiuto) == opzioni(completamento), opzioni(aiuto) ^ opzioni(completamento))
    pretendi(len(variabili(aiuto)) > 12 and variabili(aiuto) == variabili(pagine), variabili(aiuto) ^ variabili(pagine))
    prova = (f'. "{prefisso}/share/bash-completion/completions/lumoscad"; COMP_WORDS=(lumoscad --pro); COMP_CWORD=1;'
             ' _lumoscad; printf "%s " "${COMPREPLY[@]}"')
    pretendi(esegui("bash", "-c", prova) == "--prova-host --prova-base-dati ", "il completamento")


def dimostrazione(dove, costruzione, prefisso):
    installa(costruzione, prefisso, "--component", "demo")
    prepara = next(prefisso.rglob("prepara.sh"))
    esegui(prepara, dove, "20")
    comando = "-T TEST -H locale -D 01 -DB2SOURCE CONTABILITA -DB2SCHEMA main"
    scena = f'. "{dove}/ambiente.sh" && exec "{prefisso}/bin/lumoscad" {comando}'
    pretendi(esegui("sh", "-c", scena).strip() == "", "il programma installato esegue un comando")
    scritto = esegui("sqlite3", dove / "contabilita.sqlite", "SELECT FILEXML FROM ERRORE WHERE ERROREKEY=100")
    pretendi(scritto == "FILEccccc\n", f"il comando scrive nella base dati, non «{scritto}»")


def main(costruzione, sorgenti, versione):
    with tempfile.TemporaryDirectory(dir=costruzione, prefix="installazione-") as base_:
        base = pathlib.Path(base_)
        installa(costruzione, base / "prima")
        prefisso = base / "altrove e con blank"
        shutil.move(base / "prima", prefisso)
        controlla_elenco(prefisso, versione)
        cartella_lib = controlla_oggetti(prefisso, versione)
        pretendi(esegui(prefisso / "bin/lumoscad", "--versione").strip().endswith(versione), "la versione")
        stesse_opzioni(prefisso)
        con_cmake(base / "cmake", prefisso, cartella_lib)
        senza_blank = base / "altrove"
        shutil.move(prefisso, senza_blank)
        con_pkg_config(base / "pkgconfig", senza_blank / cartella_lib.relative_to(prefisso))
        come_parte(base / "parte", sorgenti)
        dimostrazione(base / "dimostrazione", costruzione, senza_blank)
    print("installazione: elenco, oggetti, manuale, find_package, pkg-config, sottoprogetto, dimostrazione")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3])
