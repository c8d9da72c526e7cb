/* A program in C with GTK and its main loop: a window, and a command line of the standard input that it runs when the
 * loop is running. Prints what came of it, and whether the loop went on meanwhile. */

#include <lumoscad/lumoscad.h>

#include <gtk/gtk.h>
#ifdef GDK_WINDOWING_X11
#include <gdk/gdkx.h>
#endif

#include <stdio.h>
#include <string.h>

struct Caller {
  char line[1024];
  GtkWidget* window;
  int number;
  int ticks;
};

static gboolean Tick(gpointer data) {
  ++((struct Caller*)data)->ticks;
  return G_SOURCE_CONTINUE;
}

static gboolean Run(gpointer data) {
  struct Caller* caller = data;
  lumoscad_maniglia* handle = NULL;
  lumoscad_esito* outcome = NULL;
  int before;
  caller->number = lumoscad_apri(&handle);
  if (caller->number == LUMOSCAD_RIUSCITO) {
#ifdef GDK_WINDOWING_X11
    GdkWindow* window = gtk_widget_get_window(caller->window);
    if (GDK_IS_X11_WINDOW(window)) {
      lumoscad_finestra_madre(handle, gdk_x11_window_get_xid(window));
    }
#endif
    before = caller->ticks;
    caller->number = lumoscad_esegui_riga(handle, caller->line, &outcome);
    printf("%d \"%s\" \"%s\"\n", caller->number, lumoscad_campo(outcome, LUMOSCAD_CAMPO_TESTO, NULL),
           lumoscad_campo(outcome, LUMOSCAD_CAMPO_MESSAGGIO, NULL));
    puts(caller->ticks > before ? "timers went on" : "timers stood still");
    lumoscad_libera(outcome);
    lumoscad_chiudi(handle);
  }
  gtk_main_quit();
  return G_SOURCE_REMOVE;
}

int main(int argc, char** argv) {
  struct Caller caller = {"", NULL, 0, 0};
  if (fgets(caller.line, sizeof caller.line, stdin) == NULL) {
    return 2;
  }
  caller.line[strcspn(caller.line, "\r\n")] = '\0';
  gtk_init(&argc, &argv);
  caller.window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_title(GTK_WINDOW(caller.window), "Contabilità");
  gtk_window_set_default_size(GTK_WINDOW(caller.window), 640, 480);
  gtk_widget_show_all(caller.window);
  g_timeout_add(100, Tick, &caller);
  g_idle_add(Run, &caller);
  gtk_main();
  return caller.number;
}
