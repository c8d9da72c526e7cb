// The commands without a list window, and lines that reach no handler.

#include "Pagine.hpp"

namespace lumoscad::test {
namespace {

/// A play of one command line after the other, each with host, company and database.
Scenetta Comandi(std::string titolo, std::vector<std::string> comandi) {
  return {std::move(titolo), [comandi = std::move(comandi)](Scena& scena) {
            for (const auto& comando : comandi) {
              scena.Esegui(comando);
            }
          }};
}

/// The same with the lines as they are.
Scenetta ComandiSoli(std::string titolo, std::vector<std::string> comandi) {
  return {std::move(titolo), [comandi = std::move(comandi)](Scena& scena) {
            for (const auto& comando : comandi) {
              scena.EseguiCosi(comando);
            }
          }};
}

Scenetta ConProgramma(std::string titolo, std::string corpo, std::string comando) {
  return {std::move(titolo), [corpo = std::move(corpo), comando = std::move(comando)](Scena& scena) {
            scena.Programma(corpo);
            scena.Esegui(comando);
          }};
}

constexpr const char* Partita = "-C 20100001 -P AB   123";
constexpr const char* Documento = "-S OC -A 06 -N 123 -E 2006";

std::string Con(const char* inizio, const char* opzioni) {
  return std::string(inizio) + " " + opzioni;
}

} // namespace

std::vector<Scenetta> ReciteSenzaFinestra() {
  return {
      ComandiSoli("righe che non raggiungono nessun comando",
                  {"", " ", "-T FOO /A", "/CREDITI", "-T BANCA", "-T SOSPESO /CREDITI", "-T", "-D 01 -T",
                   "-T BANCA -T FOO /A"}),
      Comandi("TEST", {"-T TEST", "-t test /A"}),
      ComandiSoli("TEST senza origine dati", {"-T TEST", "-T TEST -DB2SOURCE MAI_VISTA -DB2USER u -DB2PASS p"}),
      Comandi("EXTRA", {"-T EXTRA /A -S A -E 2006 -N 15"}),
      Comandi("EXTRA in minuscolo, due volte", {"-t extra /a /a -s A -e 2006 -n 15"}),
      Comandi("EXTRA dimostrativo", {"-T EXTRA /A -S A -E 2006 -N 15 -DEMO"}),
      Comandi("EXTRA di un movimento che non c'è", {"-T EXTRA /A -S A -E 2006 -N 99"}),
      Comandi("EXTRA rifiutato dall'host", {"-T EXTRA /A -S A -E 06 -N 15", "-T EXTRA /A -S A -E 2006"}),
      Comandi("EXTRA con le opzioni di un comando precedente", {"-T EXTRA /A -S A -E 2006 -N 15 -DEMO", "-T EXTRA /A"}),
      ComandiSoli("EXTRA con un'opzione senza valore", {"-T EXTRA /A -S A -E 2006 -N", "-T EXTRA /A -H"}),
      Comandi("SOSPESO /A", {Con("-T SOSPESO /A", Partita)}),
      Comandi("SOSPESO /D", {Con("-T SOSPESO /D", Partita)}),
      Comandi("SOSPESO /A e poi /D", {Con("-T SOSPESO /A", Partita), Con("-T SOSPESO /D", Partita)}),
      Comandi("SOSPESO /A /D in una riga", {Con("-T SOSPESO /A /D", Partita), Con("-T SOSPESO /D /A", Partita)}),
      Comandi("SOSPESO dimostrativo", {Con("-T SOSPESO /A /D -DEMO", Partita)}),
      Comandi("SOSPESO rifiutato dall'host",
              {"-T SOSPESO /A -C BLOCCATO -P AB   123", "-T SOSPESO /D -C BLOCCATO -P AB   123"}),
      Comandi("SOSPESO di una partita che non c'è", {"-T SOSPESO /A -C 20100001 -P ZZ   999"}),
      Comandi("SOSPESO di un conto che non c'è", {"-T SOSPESO /D -C 99999999 -P AB   123"}),
      Comandi("SOSPESO senza conto né partita", {"-T SOSPESO /A", "-T SOSPESO /A -C 20100001 -P"}),
      Comandi("PRESUNTO /A", {Con("-T PRESUNTO /A", Documento)}),
      Comandi("PRESUNTO /D", {Con("-T PRESUNTO /D", Documento)}),
      Comandi("PRESUNTO /A e /D in una riga", {Con("-T PRESUNTO /A /D", Documento)}),
      Comandi("PRESUNTO dimostrativo, che resta tale",
              {Con("-T PRESUNTO /A -DEMO", Documento), Con("-T PRESUNTO /D", Documento)}),
      Comandi("PRESUNTO con -DEMO prima di un errore della riga",
              {"-T PRESUNTO /A -DEMO -S OC -A 06 -N", Con("-T PRESUNTO /A", Documento)}),
      Comandi("PRESUNTO di un documento che non c'è", {"-T PRESUNTO /A -S ZZ -A 06 -N 999"}),
      Comandi("PRESUNTO rifiutato dall'host", {"-T PRESUNTO /A -S OC -A 06 -N uno", "-T PRESUNTO /D -S OC -A 06"}),
      ConProgramma("una risposta con un messaggio su due righe e i segni riservati",
                   R"(printf '<R><MESSAGGIO>Prima riga\n&lt;seconda&gt; &amp; ultima</MESSAGGIO></R>')",
                   Con("-T SOSPESO /A", Partita)),
      ConProgramma("una risposta con messaggio ed errore insieme",
                   R"(printf '<R><MESSAGGIO>Ricevuto</MESSAGGIO><ERRORE>Ma rifiutato</ERRORE></R>')",
                   Con("-T SOSPESO /A", Partita)),
      ConProgramma("una risposta in latin1",
                   R"(printf '<?xml version="1.0" encoding="ISO-8859-1"?><R><MESSAGGIO>Perch\351</MESSAGGIO></R>')",
                   Con("-T PRESUNTO /A", Documento)),
      ConProgramma("una risposta senza messaggio", R"(printf '<R/>')", Con("-T EXTRA /A", "-S A -E 2006 -N 15")),
  };
}

} // namespace lumoscad::test
