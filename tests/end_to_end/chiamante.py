"""A program in Python that loads the component: python3 chiamante.py LIBRARY

Every line of the standard input is a command line with a letter in front: "M" runs it on the main thread, "S" on a
second thread, "N" on a new thread. Only "M" is not waited for. Each result goes to the standard output as it comes.
"""
import ctypes
import queue
import sys
import threading

libreria = ctypes.CDLL(sys.argv[1])
libreria.lumoscad_esegui.argtypes = [ctypes.c_char_p, ctypes.c_char_p, ctypes.c_size_t]
libreria.lumoscad_esegui.restype = ctypes.c_size_t
del_principale = queue.Queue()


def esegui(chi, comando):
    risultato = ctypes.create_string_buffer(64)
    libreria.lumoscad_esegui(comando.encode(), risultato, len(risultato))
    print(f'{chi} "{risultato.value.decode()}"', flush=True)


def leggi():
    for riga in sys.stdin:
        chi, comando = riga[0], riga[2:].rstrip("\n")
        if chi == "M":
            del_principale.put(comando)
        elif chi == "S":
            esegui(chi, comando)
        else:
            nuovo = threading.Thread(target=esegui, args=(chi, comando))
            nuovo.start()
            nuovo.join()
    del_principale.put(None)


threading.Thread(target=leggi).start()
while (comando := del_principale.get()) is not None:
    esegui("M", comando)
