#include "Pagina.hpp"

#include <sstream>
#include <string_view>

namespace lumoscad::test {
namespace {

std::string Elenco(const Testi& nomi) {
  std::string testo;
  for (const std::string& nome : nomi) {
    testo += (testo.empty() ? "`" : ", `") + nome + "`";
  }
  return testo.empty() ? "nothing" : testo;
}

std::string Base(const Osservazione& vista) {
  return vista.applicata ? "**changed**" : vista.intatta ? "as before" : "**half changed**";
}

std::string Amministratore(const Osservazione& vista) {
  std::string testo;
  const auto aggiungi = [&](const std::string& cosa) { testo += (testo.empty() ? "" : "; ") + cosa; };
  if (vista.fermato) {
    aggiungi("removes the lock");
  }
  for (const std::string& nome : vista.sullHost) {
    if (!nome.starts_with("VB")) {
      aggiungi("may remove `" + nome + "` from the host");
    }
  }
  if (!vista.ripetuto.empty()) {
    aggiungi("then the command repeated: " + vista.ripetuto);
  } else if (vista.accettata && vista.intatta) {
    aggiungi("finishes what the note tells");
  }
  return testo.empty() ? "nothing" : testo;
}

} // namespace

std::string Esito(const Osservazione& vista) {
  return Elenco(vista.sullHost) + " | " + Elenco(vista.inLocale) + " | " +
         (vista.accettata ? "**accepted**" : "not asked") + " | " + Base(vista) + " | " + vista.nota + " | " +
         vista.successivo + " | " + Amministratore(vista);
}

std::string Tabella(const Testi& passi, const std::vector<Osservazione>& viste) {
  std::string testo = "| Killed at | Left on the host | Left on the terminal | Host | Database | Note | Next command "
                      "of another terminal | "
                      "Administrator |\n"
                      "| --------- | ---------------- | -------------------- | ---- | -------- | ---- | "
                      "-------------------------------- | "
                      "------------- |\n";
  for (std::size_t primo = 0; primo < viste.size();) {
    const std::string esito = Esito(viste[primo]);
    std::size_t fine = primo + 1;
    while (fine < viste.size() && Esito(viste[fine]) == esito) {
      ++fine;
    }
    testo += "| " + passi[primo] + (fine - primo == 1 ? "" : " – " + passi[fine - 1]) + " | " + esito + " |\n";
    primo = fine;
  }
  return testo;
}

std::vector<Linea> LeggiTabella(const std::string& sezione) {
  constexpr std::string_view Fra = " – ";
  std::vector<Linea> linee;
  std::istringstream flusso(sezione);
  for (std::string riga; std::getline(flusso, riga);) {
    const auto fine = riga.find(" | ");
    if (!riga.starts_with("| ") || fine == std::string::npos || riga.starts_with("| Killed at ") ||
        riga.starts_with("| ---")) {
      continue;
    }
    const std::string passi = riga.substr(2, fine - 2);
    const auto mezzo = passi.find(Fra);
    linee.push_back({passi.substr(0, mezzo), mezzo == std::string::npos ? passi : passi.substr(mezzo + Fra.size()),
                     riga.substr(fine + 3, riga.size() - fine - 5)});
  }
  return linee;
}

std::string Sezione(const std::filesystem::path& pagina, const std::string& titolo) {
  std::string sezione;
  bool dentro = false;
  for (const std::string& riga : LeggiRighe(pagina)) {
    if (riga.starts_with("## ")) {
      dentro = riga == "## `" + titolo + "`";
    }
    if (dentro) {
      sezione += riga + "\n";
    }
  }
  return sezione;
}

std::string Intestazione() {
  return R"(# Killed at every step

What is found after a terminal was killed with `SIGKILL` at each step of each command, on PostgreSQL and a host that is a
directory, and what the same command of another terminal comes to right after. Neighbouring steps after which the same
is found share a line, which names the first and the last of them; `…` stands for times and process numbers. "Sent" is
a message of the driver's that has left for the server, "answered" the end of the statement, "copied beside its place" a
file that has all its bytes and not yet its name. "Note" is what the terminal's note says of its command: the last phase
that was reached, "none" where there is none.

The page is written by `uccisioni_test`, which otherwise compares it with what it finds:
`LUMOSCAD_PAGINA_UCCISIONI=docs/uccisioni.md build/bin/uccisioni_test` writes it anew. What the tables say is explained
in [affidabilita.md](affidabilita.md).
)";
}

} // namespace lumoscad::test
