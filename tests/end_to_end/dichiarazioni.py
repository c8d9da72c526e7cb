#!/usr/bin/env python3
"""Checks the public headers: each compiles alone, in C too where it is for C, and everything that they declare links
against the shared library alone.

Usage: dichiarazioni.py LIBRARY INCLUDE_DIRECTORY CXX_COMPILER C_COMPILER
"""
import json
import pathlib
import subprocess
import sys
import tempfile

AVVISI = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]
LINGUE_CPP = [["-x", "c++", "-std=c++20"]]
LINGUE_C = [["-x", "c", "-std=c90"], ["-x", "c", "-std=c11"], ["-x", "c++", "-std=c++98"]]


def esegui(comando):
    esito = subprocess.run(comando, capture_output=True, text=True)
    if esito.returncode != 0:
        sys.exit(f"{' '.join(map(str, comando))}\n{esito.stderr}")
    return esito.stdout


def oggetti(testo):
    """The JSON objects of a dump, which stand one after the other."""
    lettore, posto = json.JSONDecoder(), 0
    while (posto := testo.find("{", posto)) >= 0:
        oggetto, posto = lettore.raw_decode(testo, posto)
        yield oggetto


def funzioni(nodo):
    """The link names of the functions below `nodo` that are declared and not defined there."""
    figli = nodo.get("inner", [])
    if nodo.get("kind", "").startswith(("Function", "CXXMethod", "CXXConstructor", "CXXDestructor")) \
            and nodo["kind"].endswith("Decl"):
        assente = nodo.get("isImplicit") or nodo.get("explicitlyDeleted") or nodo.get("explicitlyDefaulted")
        if not assente and not any(figlio.get("kind") == "CompoundStmt" for figlio in figli):
            yield nodo["mangledName"]
        return
    for figlio in figli:
        yield from funzioni(figlio)


def dichiarate(intestazione, inclusione, lingua):
    # The dump is clang's own; the project's compiler may be another.
    comando = ["clang", *lingua, "-fsyntax-only", "-I", inclusione, "-Xclang", "-ast-dump=json", "-Xclang",
               "-ast-dump-filter=lumoscad", intestazione]
    nomi = set()
    for oggetto in oggetti(esegui(comando)):
        nomi.update(funzioni(oggetto))
    return nomi


def collega(nomi, libreria, compilatore, cartella):
    sorgente = cartella / "tutte.c"
    righe = [f'extern const char f{i}[] __asm__("{nome}");' for i, nome in enumerate(sorted(nomi))]
    righe.append("const void* const tutte[] = {" + ", ".join(f"f{i}" for i in range(len(nomi))) + "};")
    righe.append("int main(void) { return tutte[0] == 0; }")
    sorgente.write_text("\n".join(righe) + "\n", encoding="utf-8")
    esegui([compilatore, "-fPIC", sorgente, libreria, "-o", cartella / "tutte"])


def main(libreria, inclusione, compilatore_cpp, compilatore_c):
    nomi = set()
    with tempfile.TemporaryDirectory() as temporanea:
        cartella = pathlib.Path(temporanea)
        for intestazione in sorted(pathlib.Path(inclusione).rglob("*.h*")):
            per_c = intestazione.suffix == ".h"
            for lingua in LINGUE_CPP + (LINGUE_C if per_c else []):
                compilatore = compilatore_c if lingua[1] == "c" else compilatore_cpp
                sola = cartella / "sola"
                sola.write_text(f'#include "{intestazione}"\n', encoding="utf-8")
                esegui([compilatore, *lingua, *AVVISI, "-fsyntax-only", "-I", inclusione, sola])
                trovate = dichiarate(intestazione, inclusione, lingua)
                if not trovate:
                    sys.exit(f"{intestazione}: no function found in it")
                nomi |= trovate
        collega(nomi, libreria, compilatore_c, cartella)
    print(f"{len(nomi)} functions declared, all of them link")


main(*sys.argv[1:])
