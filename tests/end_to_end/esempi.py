#!/usr/bin/env python3
"""Builds the examples of esempi/ from what is installed, and from nothing else, and runs each: on a fresh demonstration, in
a display of its own, a person's keys change due dates and banks in the credits screen. What the program prints, the host's
log and the rows of the database are looked at afterwards.

Usage: esempi.py BUILD_DIRECTORY SOURCE_DIRECTORY [--tutti]
  --tutti  also those that want packages of their own (C# and GTK)
"""
import ctypes
import os
import pathlib
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor

sys.dont_write_bytecode = True
from installazione import esegui, installa, pretendi  # noqa: E402

COMANDO = "-T BANCA /CREDITI -H locale -D 01 -DB2SOURCE CONTABILITA -DB2USER demo -DB2PASS demo -DB2SCHEMA main"
LISTA = "LumoScad - Scadenze e banche dei clienti"
RIUSCITO = '0 "" "Variate 4 scadenze"\n'


class Schermo:
    """A display with a window manager, and what is to be known of the windows in it."""

    def __init__(self, cartella):
        leggi, scrivi = os.pipe()
        self.registro = open(cartella / "schermo.log", "w", encoding="utf-8")
        self.processi = [subprocess.Popen(["Xvfb", "-displayfd", str(scrivi), "-screen", "0", "1280x800x24", "-nolisten", "tcp",
                                           "-noreset"], pass_fds=[scrivi], stdout=self.registro, stderr=self.registro)]
        os.close(scrivi)
        with os.fdopen(leggi) as numero:
            self.nome = ":" + numero.readline().strip()
        pretendi(self.nome != ":", "lo schermo virtuale parte")
        self.ambiente = dict(os.environ, DISPLAY=self.nome, XDG_RUNTIME_DIR=str(cartella),
                             XDG_CONFIG_HOME=str(cartella / "impostazioni"))
        self.ambiente.pop("WAYLAND_DISPLAY", None)
        self.ambiente.pop("QT_QPA_PLATFORM", None)
        self.processi.append(subprocess.Popen(["openbox"], env=self.ambiente, stdout=self.registro, stderr=self.registro))
        # A window that comes up before there is somebody to manage it may stay unseen.
        self.aspetta("il gestore di finestre parte", lambda: subprocess.run(
            ["xdotool", "get_num_desktops"], env=self.ambiente, capture_output=True, check=False).returncode == 0)
        self.x11 = ctypes.CDLL("libX11.so.6")
        self.x11.XInitThreads()
        self.x11.XOpenDisplay.restype = ctypes.c_void_p
        for funzione in ("XCreateSimpleWindow", "XDefaultRootWindow"):
            getattr(self.x11, funzione).restype = ctypes.c_ulong
        self.collegato = ctypes.c_void_p(self.x11.XOpenDisplay(self.nome.encode()))
        pretendi(self.collegato, "lo schermo virtuale risponde")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.x11.XCloseDisplay(self.collegato)
        for processo in reversed(self.processi):
            processo.terminate()
            processo.wait()
        self.registro.close()

    def finestra_altrui(self):
        """A window that no toolkit of the caller knows."""
        radice = ctypes.c_ulong(self.x11.XDefaultRootWindow(self.collegato))
        finestra = self.x11.XCreateSimpleWindow(self.collegato, radice, 100, 100, 640, 480, 0, ctypes.c_ulong(0),
                                                ctypes.c_ulong(0))
        self.x11.XMapWindow(self.collegato, ctypes.c_ulong(finestra))
        self.x11.XSync(self.collegato, 0)
        return finestra

    def sopra(self, finestra):
        """The number of the window that `finestra` is to stay above; 0 for none."""
        numero = ctypes.c_ulong(0)
        self.x11.XGetTransientForHint(self.collegato, ctypes.c_ulong(finestra), ctypes.byref(numero))
        return numero.value

    @staticmethod
    def aspetta(che, vero):
        """What `vero` gives, once it gives something."""
        for _ in range(600):
            if trovato := vero():
                return trovato
            time.sleep(0.1)
        sys.exit(f"non è così: {che}")

    def cerca(self, titolo, programma=None):
        """The number of the visible window with this title, once there is one."""
        def visibile():
            pretendi(programma is None or programma.poll() is None, "il programma mostra la finestra")
            return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{titolo}$"], env=self.ambiente,
                                  capture_output=True, text=True, check=False).stdout.split()
        return int(self.aspetta(f"c'è la finestra «{titolo}»", visibile)[0])


class Prova:
    """What every example is run with."""

    def __init__(self, base, prefisso, sorgenti):
        self.base, self.prefisso, self.sorgenti = base, prefisso, sorgenti
        self.lib = next(prefisso.rglob("liblumoscad.so.1")).parent
        self.prepara = next(prefisso.rglob("prepara.sh"))
        self.pc = dict(os.environ, PKG_CONFIG_PATH=str(self.lib / "pkgconfig"))

    def opzioni(self, *pacchetti):
        return esegui("pkg-config", "--cflags", "--libs", "lumoscad", *pacchetti, env=self.pc).split()

    def compila(self, compilatore, sorgente, *altro, pacchetti=()):
        programma = self.base / f"{compilatore}-{sorgente}.bin"
        esegui(compilatore, "-Wall", "-Wextra", "-Wpedantic", "-Werror", *altro, self.esempio(sorgente), "-o", programma,
               *self.opzioni(*pacchetti))
        return [programma]

    def esempio(self, nome):
        return next(self.prefisso.rglob(f"esempi/{nome}"))

    def righe(self, dimostrazione):
        sql = ("SELECT EVENTOCONTABILEKEY, DATASCADENZA, coalesce(BANCAPRESENTAZIONE_KEY, 0) FROM EVENTOCONTABILE"
               " ORDER BY EVENTOCONTABILEKEY")
        return esegui("sqlite3", dimostrazione / "contabilita.sqlite", sql).splitlines()

    def recita(self, nome, comando, atteso, madre=None, ambiente=()):
        """Plays the credits screen in the program that `comando` starts. `madre` gives, of the display, the window that
        the list must stay above, and the arguments that tell the program so."""
        dimostrazione = self.base / f"demo {nome}"
        esegui(self.prepara, dimostrazione)
        prima = self.righe(dimostrazione)
        esecuzione = dimostrazione / "esecuzione"
        esecuzione.mkdir(mode=0o700)
        with Schermo(esecuzione) as schermo:
            altro, sotto = madre(schermo) if madre else ([], None)
            suo = dict(schermo.ambiente, LD_LIBRARY_PATH=str(self.lib), PYTHONPATH=str(self.base), **dict(ambiente))
            programma = subprocess.Popen(
                ["sh", "-c", '. "$0" && exec "$@"', dimostrazione / "ambiente.sh", *map(str, comando + altro)], env=suo,
                cwd=dimostrazione, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
            try:
                with programma.stdin as ingresso:
                    ingresso.write(COMANDO + "\n")
                lista = schermo.cerca(LISTA, programma)
                if sotto is not None:
                    attesa = sotto if isinstance(sotto, int) else sotto()
                    trovata = schermo.sopra(lista)
                    pretendi(trovata == attesa, f"{nome}: la lista {lista} sta sopra la finestra {attesa}, non {trovata}")
                esegui(self.sorgenti / "scripts/play_credits.sh", dimostrazione / "lista.png", programma.pid,
                       env=schermo.ambiente)
                stampato, errori = programma.stdout.read(), programma.stderr.read()
                stato = programma.wait(timeout=60)
            finally:
                programma.kill()
        pretendi((stato, stampato) == (0, atteso), f"{nome}: {stato} {stampato!r} {errori!r}")
        pretendi("lumoscad" not in errori.lower(), f"{nome}: {errori}")
        cambiate = sum(riga != poi for riga, poi in zip(prima, self.righe(dimostrazione)))
        pretendi(cambiate == 4, f"{nome}: {cambiate} righe cambiate")
        registro = (dimostrazione / "host/registro/VB0001.log").read_text(encoding="utf-8")
        pretendi(registro.count("ACCETTATA") == 1 == len(registro.splitlines()), f"{nome}: {registro}")
        print(f"esempio {nome}: {stampato.splitlines()[0]}")


def altrui(schermo):
    finestra = schermo.finestra_altrui()
    return [str(finestra)], finestra


def nulla(_):
    return [str(0x7ffffff0)], None


def propria(schermo):
    return [], lambda: schermo.cerca("Contabilità")


def nel_cancello(prova):
    """The plays of the examples that want nothing but the build's own tools."""
    c = prova.compila("gcc", "crediti.c", "-std=c89")
    yield "c", c, RIUSCITO, altrui
    yield "c, numero di nessuna finestra", c, RIUSCITO, nulla
    yield "c++", prova.compila("g++", "crediti.cpp", "-std=c++17"), '""\n'
    qt = prova.compila("g++", "crediti_qt.cpp", "-std=c++17", "-fPIC", pacchetti=("Qt6Widgets",))
    yield "qt", qt, RIUSCITO + "timers went on\n", propria
    modulo = prova.base / "lumoscad.py"
    modulo.write_bytes(next(prova.prefisso.rglob("lumoscad.py")).read_bytes())
    yield "python", ["python3", prova.esempio("crediti.py")], RIUSCITO, altrui


def con_altri_pacchetti(prova):
    yield "c++ di clang", prova.compila("clang++", "crediti.cpp", "-std=c++20"), '""\n'
    programma = prova.base / "Crediti.exe"
    esegui("mcs", "-warnaserror", f"-out:{programma}", prova.esempio("Crediti.cs"))
    yield "c#", ["mono", programma], RIUSCITO
    gtk = prova.compila("gcc", "crediti_gtk.c", "-std=c11", "-Wno-overlength-strings", pacchetti=("gtk+-3.0",))
    yield "gtk", gtk, RIUSCITO + "timers went on\n", propria
    yield "gtk, Qt senza glib", gtk, RIUSCITO + "timers stood still\n", propria, [("QT_NO_GLIB", "1")]


def main(costruzione, sorgenti, tutti):
    with tempfile.TemporaryDirectory(dir=costruzione, prefix="esempi-") as base_:
        base = pathlib.Path(base_)
        installa(costruzione, base / "prefisso")
        installa(costruzione, base / "prefisso", "--component", "demo")
        prova = Prova(base, base / "prefisso", sorgenti)
        recite = list(nel_cancello(prova)) + (list(con_altri_pacchetti(prova)) if tutti else [])
        # A play is mostly waiting for windows; each has a display of its own.
        with ThreadPoolExecutor(max_workers=3) as insieme:
            for fatta in [insieme.submit(prova.recita, *recita) for recita in recite]:
                fatta.result()


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]).absolute(), pathlib.Path(sys.argv[2]).absolute(), "--tutti" in sys.argv[3:])
