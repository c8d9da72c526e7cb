/* A program in C that loads the component; it reads and writes what chiamante.py does. */

#include "lumoscad/lumoscad.h"

#include <pthread.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

enum { LUNGHEZZA = 4096 };

struct Comando {
  char chi;
  char riga[LUNGHEZZA];
};

static void Esegui(const struct Comando* comando) {
  char risultato[64];
  lumoscad_esegui(comando->riga, risultato, sizeof risultato);
  printf("%c \"%s\"\n", comando->chi, risultato);
  fflush(stdout);
}

static void* SuUnNuovo(void* comando) {
  Esegui(comando);
  return NULL;
}

static void* Leggi(void* principale) {
  char riga[LUNGHEZZA];
  while (fgets(riga, sizeof riga, stdin) != NULL) {
    struct Comando comando = {riga[0], ""};
    riga[strcspn(riga, "\n")] = '\0';
    strcpy(comando.riga, riga + 2);
    if (comando.chi == 'M') {
      if (write(*(int*)principale, &comando, sizeof comando) != sizeof comando) {
        break;
      }
    } else if (comando.chi == 'S') {
      Esegui(&comando);
    } else {
      pthread_t nuovo;
      if (pthread_create(&nuovo, NULL, SuUnNuovo, &comando) != 0) {
        break;
      }
      pthread_join(nuovo, NULL);
    }
  }
  close(*(int*)principale);
  return NULL;
}

int main(void) {
  int tubo[2];
  pthread_t lettore;
  struct Comando comando;
  if (pipe(tubo) != 0 || pthread_create(&lettore, NULL, Leggi, &tubo[1]) != 0) {
    return 1;
  }
  while (read(tubo[0], &comando, sizeof comando) == sizeof comando) {
    Esegui(&comando);
  }
  pthread_join(lettore, NULL);
  return 0;
}
