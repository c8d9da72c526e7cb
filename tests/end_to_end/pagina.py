#!/usr/bin/env python3
"""Does what docs/integrazione.md says, block by block: writes its programs, and runs its commands in their order, in one
shell, in a directory of its own that has the build as `build`. No display is there: a message goes to the standard error.

Of a block `file` says where its text goes; a text `of` a block of commands is what those print.

Usage: pagina.py BUILD_DIRECTORY SOURCE_DIRECTORY
"""
import os
import pathlib
import shlex
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
from page_blocks import blocks  # noqa: E402

NOTA = "sospeso-20260305-140709-4711"
# What a command that was cut short would have left.
PRIMA = {"in-sospeso": f"""
printf '%s\\n' 'lumoscad-nota 1' 'inizio=2026-03-05 14:07:09' postazione=T01 'comando=SOSPESO /A' azienda=01 host=10.0.0.1 \\
  origine=CONTABILITA genere=azione elemento=01 elemento=SOSPESOCREA elemento=C1 'elemento=AB 1' fine \\
  >"$NEXARO_CARTELLA_LOCALE/{NOTA}.nota"
printf '%s\\n' 'lumoscad-fase 1' fase=rifiutata 'momento=2026-03-05 14:07:10' 'risposta=conto bloccato' fine \\
  >"$NEXARO_CARTELLA_LOCALE/{NOTA}.fase"
"""}


def prepara(trovati, cartella):
    """Writes the page's programs; gives the script of its commands."""
    righe = ["set -eu"]
    for blocco in trovati:
        if "file" in blocco.settings:
            (cartella / blocco.settings["file"]).write_text(blocco.text, encoding="utf-8")
        elif blocco.language == "sh":
            righe += [PRIMA.get(blocco.name, ""), f"echo {shlex.quote(blocco.name)} >fin-qui", "{", blocco.text,
                      f"}} >stampa-{blocco.name}"]
        elif blocco.language != "text":
            sys.exit(f"{blocco.name}: neither a file nor a command")
    return "\n".join(righe)


def main(costruzione, sorgenti):
    pagina = sorgenti / "docs/integrazione.md"
    trovati = blocks(pagina)
    with tempfile.TemporaryDirectory(dir=costruzione, prefix="pagina-") as base:
        cartella = pathlib.Path(base)
        (cartella / "build").symlink_to(costruzione)
        ambiente = {nome: valore for nome, valore in os.environ.items()
                    if nome not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM") and not nome.startswith("NEXARO")}
        fatto = subprocess.run(["bash", "-c", prepara(trovati, cartella)], cwd=cartella, env=ambiente, capture_output=True,
                               text=True, check=False)
        if fatto.returncode != 0:
            sys.exit(f"{(cartella / 'fin-qui').read_text()}: {fatto.returncode}\n{fatto.stderr}")
        confronti = [blocco for blocco in trovati if "of" in blocco.settings]
        for blocco in confronti:
            stampato = (cartella / f"stampa-{blocco.settings['of']}").read_text(encoding="utf-8")
            if stampato != blocco.text:
                sys.exit(f"{blocco.name}: the page says\n{blocco.text}and there was\n{stampato}")
        pretesi = {"con-cmake": 'esito: ""\n', "prova-senza-maniglia": '""\n', "in-sospeso": NOTA,
                   "riallinea": "la nota è stata tolta", "prova-note": "Non c'è nulla in sospeso.",
                   "prova-cpp": "CREDITI libera", "prova-python": "0 La partita è stata sospesa"}
        for nome, testo in pretesi.items():
            stampato = (cartella / f"stampa-{nome}").read_text(encoding="utf-8")
            if testo not in stampato:
                sys.exit(f"{nome}: {testo!r} is not in {stampato!r}")
    comandi = sum(blocco.language == "sh" for blocco in trovati)
    print(f"{pagina.name}: {len(trovati)} blocks, {comandi} of commands that ran, {len(confronti)} prints compared")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]).absolute(), pathlib.Path(sys.argv[2]).absolute())
