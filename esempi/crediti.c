/* A program in C: reads a command line from the standard input, runs it, and prints what came of it.
 * Usage: crediti [WINDOW]   WINDOW is the number of the X11 window over which the component's windows open. */

#include <lumoscad/lumoscad.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

int main(int argc, char** argv) {
  char line[1024];
  lumoscad_maniglia* handle = NULL;
  lumoscad_esito* outcome = NULL;
  int number;

  if (fgets(line, sizeof line, stdin) == NULL) {
    return 2;
  }
  line[strcspn(line, "\r\n")] = '\0';

  number = lumoscad_apri(&handle);
  if (number != LUMOSCAD_RIUSCITO) {
    return number;
  }
  if (argc > 1) {
    lumoscad_finestra_madre(handle, strtoul(argv[1], NULL, 0));
  }
  number = lumoscad_esegui_riga(handle, line, &outcome);
  printf("%d \"%s\" \"%s\"\n", number, lumoscad_campo(outcome, LUMOSCAD_CAMPO_TESTO, NULL),
         lumoscad_campo(outcome, LUMOSCAD_CAMPO_MESSAGGIO, NULL));
  if (number == LUMOSCAD_ERRORE || number >= LUMOSCAD_RIFIUTATO) {
    fprintf(stderr, "%s\n", lumoscad_errore_testo(handle));
  }
  lumoscad_libera(outcome);
  lumoscad_chiudi(handle);
  return number;
}
