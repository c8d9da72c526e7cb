"""The component from Python: the C interface (lumoscad/lumoscad.h) by ctypes, with results and errors as objects.

    import lumoscad

    with lumoscad.LumoScad() as componente:
        esito = componente.esegui("-T BANCA /CREDITI -H 10.0.0.1 -D 01 ...")

Commands are given on the thread of the windows: that of the process' QApplication, or else the one that gave the first
command. A call that was refused, or whose arguments were, raises `Errore`; so does whatever the administrator's
functions fail at. A command that fails does not: its result says so, and the person has been told.

The library is found as the system finds libraries (LD_LIBRARY_PATH); another one is named to `LumoScad`.
"""
import ctypes

RIUSCITO, ERRORE, DA_CHIEDERE, CHIUSO, RIFIUTATO, ARGOMENTO, NON_UTF8, SENZA_MEMORIA, INTERROTTO = 0, 1, 3, 4, 5, 6, 7, 8, 9

# The texts of a result and those that say yes or no, by the names that they have as attributes.
_CAMPI = {"testo": 1, "messaggio": 2, "errore": 3, "nome": 4, "chi": 5, "quando": 6, "impronta": 7, "stato": 8, "tipo": 9,
          "riga": 10, "file": 11, "host": 16, "base_dati": 17, "consiglio": 18, "domanda": 19}
_VERI = {"nota": 12, "preso": 13, "in_corso": 14, "archiviata": 15}

_MOSTRA = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int, ctypes.c_char_p)
_FUNZIONI = {
    "apri": (ctypes.c_int, "p"), "chiudi": (None, "p"), "errore": (ctypes.c_int, "p"),
    "errore_testo": (ctypes.c_char_p, "p"), "versione": (ctypes.c_char_p, ""),
    "versione_numero": (ctypes.c_ulong, ""), "finestra_madre": (ctypes.c_int, "pu"),
    "controlla_testi": (ctypes.c_int, "pi"), "campo": (ctypes.c_void_p, "pip"), "campo_vero": (ctypes.c_int, "pi"),
    "voci": (ctypes.c_size_t, "p"), "voce": (ctypes.c_void_p, "pz"), "libera": (None, "p"),
    "esegui_riga": (ctypes.c_int, "ptp"), "chiave_host": (ctypes.c_int, "ptp"), "registra_chiave": (ctypes.c_int, "ptt"),
    "prova_host": (ctypes.c_int, "pttfp"), "prova_base_dati": (ctypes.c_int, "ptfp"), "blocchi": (ctypes.c_int, "ptp"),
    "blocco": (ctypes.c_int, "pttp"), "libera_blocco": (ctypes.c_int, "ptttp"), "note": (ctypes.c_int, "ptp"),
    "nota": (ctypes.c_int, "pttp"), "riallinea_nota": (ctypes.c_int, "ptttp"), "archivia_nota": (ctypes.c_int, "pttp"),
}
_TIPI = {"p": ctypes.c_void_p, "t": ctypes.c_char_p, "i": ctypes.c_int, "u": ctypes.c_ulong, "z": ctypes.c_size_t,
         "f": _MOSTRA}


class Errore(Exception):
    """A call that did not do what it was asked: `numero`, and the Italian text as the exception's own."""

    def __init__(self, numero, testo):
        super().__init__(testo)
        self.numero = numero


class Esito:
    """What a call gave: its number, its texts by their names, and `voci`, each of which is such a result too."""

    def __init__(self, libreria, puntatore, numero):
        self.numero = numero
        lunghezza = ctypes.c_size_t()
        for nome, campo in _CAMPI.items():
            testo = libreria.lumoscad_campo(puntatore, campo, ctypes.byref(lunghezza))
            setattr(self, nome, ctypes.string_at(testo, lunghezza.value).decode("utf-8", "replace"))
        for nome, campo in _VERI.items():
            setattr(self, nome, libreria.lumoscad_campo_vero(puntatore, campo) == 1)
        self.voci = [Esito(libreria, libreria.lumoscad_voce(puntatore, indice), numero)
                     for indice in range(libreria.lumoscad_voci(puntatore))]


def _byte(testo):
    return None if testo is None else testo.encode("utf-8")


class LumoScad:
    """A handle of the component. To be used by one thread at a time, and closed: it is a context manager."""

    def __init__(self, libreria="liblumoscad.so.1"):
        self._maniglia = ctypes.c_void_p()
        self._libreria = ctypes.CDLL(libreria)
        for nome, (tipo, argomenti) in _FUNZIONI.items():
            funzione = getattr(self._libreria, "lumoscad_" + nome)
            funzione.restype = tipo
            funzione.argtypes = [_TIPI[argomento] for argomento in argomenti]
        numero = self._libreria.lumoscad_apri(ctypes.byref(self._maniglia))
        if numero != RIUSCITO:
            raise Errore(numero, "Memoria insufficiente")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.chiudi()

    def chiudi(self):
        self._libreria.lumoscad_chiudi(self._maniglia)
        self._maniglia = ctypes.c_void_p()

    def versione(self):
        return self._libreria.lumoscad_versione().decode()

    def finestra_madre(self, numero):
        """The X11 window over which the windows of this handle's commands open; 0 for none."""
        self._controlla(self._libreria.lumoscad_finestra_madre(self._maniglia, numero))

    def esegui(self, riga):
        """Runs a command line. The number of the result is RIUSCITO, CHIUSO or ERRORE."""
        return self._chiama("esegui_riga", riga, ammessi=(RIUSCITO, CHIUSO, ERRORE))

    def chiave_host(self, host):
        return self._chiama("chiave_host", host)

    def registra_chiave(self, riga, file):
        self._controlla(self._libreria.lumoscad_registra_chiave(self._maniglia, _byte(riga), _byte(file)))

    def prova_host(self, host, programma=None, mostra=None):
        """True when everything works. `mostra` is called with an operation, whether it worked, and what was seen."""
        return self._prova("prova_host", mostra, host, programma)

    def prova_base_dati(self, opzioni, mostra=None):
        return self._prova("prova_base_dati", mostra, opzioni)

    def blocchi(self, host):
        """The locks of the host, also those that could not be read: each says so in `errore`."""
        return self._chiama("blocchi", host, ammessi=(RIUSCITO, ERRORE)).voci

    def blocco(self, host, lista):
        return self._chiama("blocco", host, lista)

    def libera_blocco(self, host, blocco):
        """Removes a lock that `blocco` or `blocchi` has given, unless it has changed since."""
        return self._chiama("libera_blocco", host, blocco.nome, blocco.impronta)

    def note(self, opzioni=None):
        """What commands have left over: a text, and an entry a note, also of those that could not be read."""
        return self._chiama("note", opzioni, ammessi=(RIUSCITO, ERRORE))

    def nota(self, nome, opzioni=None):
        return self._chiama("nota", nome, opzioni)

    def riallinea(self, nota, opzioni=None):
        """Finishes the change of a note that `nota` has given; its `domanda` has been answered yes."""
        return self._chiama("riallinea_nota", nota.nome, nota.impronta, opzioni)

    def archivia(self, nome, motivo):
        return self._chiama("archivia_nota", nome, motivo)

    def _controlla(self, numero, ammessi=(RIUSCITO,)):
        if numero not in ammessi:
            raise Errore(numero, self._libreria.lumoscad_errore_testo(self._maniglia).decode("utf-8", "replace"))

    def _chiama(self, nome, *testi, ammessi=(RIUSCITO,)):
        puntatore = ctypes.c_void_p()
        funzione = getattr(self._libreria, "lumoscad_" + nome)
        numero = funzione(self._maniglia, *map(_byte, testi), ctypes.byref(puntatore))
        try:
            self._controlla(numero, ammessi if puntatore else (RIUSCITO,))
            return Esito(self._libreria, puntatore, numero)
        finally:
            self._libreria.lumoscad_libera(puntatore)

    def _prova(self, nome, mostra, *testi):
        sollevato = []

        def passo(_, operazione, riuscito, dettaglio):
            try:
                if mostra is not None:
                    mostra(operazione.decode(), riuscito != 0, dettaglio.decode("utf-8", "replace"))
                return 0
            except BaseException as errore:  # it ends the test, and goes on to the caller once that is over
                sollevato.append(errore)
                return 1

        funzione = getattr(self._libreria, "lumoscad_" + nome)
        numero = funzione(self._maniglia, *map(_byte, testi), _MOSTRA(passo), None)
        if sollevato:
            raise sollevato[0]
        self._controlla(numero, (RIUSCITO, ERRORE))
        return numero == RIUSCITO
