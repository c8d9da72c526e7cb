#!/usr/bin/env python3
"""Checks the public headers and what the library lets out: each header compiles alone in every language that it is for, by
gcc and by clang; what they declare and do not define is what the library exports, no more and no less, under one version
node.

Usage: dichiarazioni.py LIBRARY INCLUDE_DIRECTORY
"""
import json
import pathlib
import subprocess
import sys
import tempfile

AVVISI = ["-pedantic", "-Wall", "-Wextra", "-Wconversion", "-Wshadow", "-Werror"]
LINGUE_CPP = [["-x", "c++", "-std=c++17"], ["-x", "c++", "-std=c++20"]]
LINGUE_C = [["-x", "c", "-std=c89"], ["-x", "c", "-std=c11"], ["-x", "c++", "-std=c++98"]]
COMPILATORI = {"c": ["gcc", "clang"], "c++": ["g++", "clang++"]}
NODO = "LUMOSCAD_1"


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
        definita = any(figlio.get("kind") in ("CompoundStmt", "CXXTryStmt") for figlio in figli)
        if not assente and not definita and "mangledName" in nodo:
            yield nodo["mangledName"]
        return
    for figlio in figli:
        yield from funzioni(figlio)


def dichiarate(intestazione, inclusione, lingua):
    comando = ["clang", *lingua, "-fsyntax-only", "-I", inclusione, "-Xclang", "-ast-dump=json", "-Xclang",
               "-ast-dump-filter=lumoscad", intestazione]
    nomi = set()
    for oggetto in oggetti(esegui(comando)):
        nomi.update(funzioni(oggetto))
    return nomi


def esportate(libreria):
    """The functions that the library exports; whatever else it does, or without the node, ends the check."""
    nomi = set()
    for riga in esegui(["nm", "-D", "--defined-only", libreria]).splitlines():
        _, genere, nome = riga.split()
        if (genere, nome) == ("A", NODO):
            continue
        if genere != "T" or not nome.startswith("lumoscad_") or not nome.endswith("@@" + NODO):
            sys.exit(f"exported and not of the interface: {riga}")
        nomi.add(nome.removesuffix("@@" + NODO))
    return nomi


def main(libreria, inclusione):
    nomi, compilate = set(), 0
    with tempfile.TemporaryDirectory() as temporanea:
        sola = pathlib.Path(temporanea) / "sola"
        for intestazione in sorted(pathlib.Path(inclusione).rglob("*.h*")):
            per_c = intestazione.suffix == ".h"
            for lingua in (LINGUE_C if per_c else []) + LINGUE_CPP:
                sola.write_text(f'#include "{intestazione}"\n', encoding="utf-8")
                for compilatore in COMPILATORI[lingua[1]]:
                    esegui([compilatore, *lingua, *AVVISI, "-fsyntax-only", "-I", inclusione, sola])
                    compilate += 1
            trovate = dichiarate(intestazione, inclusione, LINGUE_C[1] if per_c else LINGUE_CPP[0])
            if not trovate:
                sys.exit(f"{intestazione}: no function found in it")
            nomi |= trovate
    if nomi != esportate(libreria):
        sys.exit(f"declared or exported, not both: {sorted(nomi ^ esportate(libreria))}")
    print(f"{compilate} compilations of headers alone; {len(nomi)} functions declared, and exported, all of them")


main(*sys.argv[1:])
