"""A program in Python: reads a command line from the standard input, runs it, and prints what came of it.

Usage: crediti.py [WINDOW]   WINDOW is the number of the X11 window over which the component's windows open.
"""
import sys

import lumoscad

with lumoscad.LumoScad() as component:
    if len(sys.argv) > 1:
        component.finestra_madre(int(sys.argv[1], 0))
    try:
        outcome = component.esegui(sys.stdin.readline().rstrip("\r\n"))
        print(f'{outcome.numero} "{outcome.testo}" "{outcome.messaggio}"')
        sys.exit(outcome.numero)
    except lumoscad.Errore as error:
        print(error, file=sys.stderr)
        sys.exit(error.numero)
