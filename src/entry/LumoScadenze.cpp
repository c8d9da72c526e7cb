#include "common/Messaggi.hpp"
#include "common/RigaComando.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "entry/Comandi.hpp"
#include "entry/Destinazione.hpp"
#include "entry/Ingresso.hpp"
#include "lumoscad/lumoscad.h"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"
#include "platform/Turn.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <exception>
#include <new>
#include <optional>
#include <utility>

namespace lumoscad {
namespace {

std::string TipoComando(const RigaComando& riga) {
  std::string tipo;
  riga.Percorri([&](const std::string& nome, std::size_t posto) {
    if (nome == "-T") {
      tipo = Maiuscolo(riga.Valore(posto + 1, "il valore di -T"));
    }
  });
  return tipo;
}

/// The row of a command type that takes no sub-command.
const Comando* SenzaSottocomando(std::string_view tipo) {
  const auto riga = std::find_if(Comandi().begin(), Comandi().end(),
                                 [&](const Comando& c) { return c.tipo == tipo && c.sottocomando.empty(); });
  return riga == Comandi().end() ? nullptr : &*riga;
}

/// Carries a command out, and with it whatever note it has written.
std::string EseguiVoce(const Comando& voce, std::string_view comando) {
  struct Chiusura {
    Chiusura() = default;
    Chiusura(const Chiusura&) = delete;
    Chiusura& operator=(const Chiusura&) = delete;
    ~Chiusura() { stato().notaInCorso.Concludi(riuscito); }
    bool riuscito = false;
  } chiusura;
  stato().notaInCorso.Comincia(voce.tipo, voce.sottocomando);
  std::string risultato = voce.gestore(comando);
  chiusura.riuscito = risultato != "error";
  return risultato;
}

std::string Esegui(std::string_view comando) {
  const RigaComando riga(comando);
  const std::string tipo = TipoComando(riga);
  stato().ComandoCorrente = comando;
  stato().andamento.Azzera();
  if (const Comando* const senza = SenzaSottocomando(tipo)) {
    return EseguiVoce(*senza, comando);
  }
  std::string risultato;
  riga.Percorri([&](const std::string& sottocomando, std::size_t) {
    for (const Comando& voce : Comandi()) {
      if (voce.tipo == tipo && voce.sottocomando == sottocomando) {
        stato().andamento.Azzera();
        risultato = EseguiVoce(voce, comando);
      }
    }
  });
  return risultato;
}

/// Tells the person of the failure in flight, and at the end what is known of the change that was under way.
void Mostra() {
  const RuntimeError errore = CurrentError();
  std::string frase = errore.Note();
  if (const std::string_view esito = stato().andamento.Frase(errore.Outcome()); !esito.empty()) {
    frase = frase.empty() ? std::string(esito) : WithSentence(std::move(frase), esito);
  }
  MostraMessaggio(std::to_string(errore.Number()).append("\r\n").append(errore.Text()), "", frase);
}

/// Writes to the standard error, and takes no memory for it.
void ScriviSenzaMemoria(int numero, std::string_view testo, std::string_view nota, std::string_view frase) noexcept {
  std::array<char, 12> cifre{};
  const auto fine = std::to_chars(cifre.data(), cifre.data() + cifre.size(), numero).ptr;
  ScriviErrore({{cifre.data(), static_cast<std::size_t>(fine - cifre.data())}, testo, nota, frase});
}

/// The last resort for the failure in flight: whatever it was, what is known of the change is told.
void ScriviSenzaMemoria() noexcept {
  const Andamento& andamento = stato().andamento;
  try {
    throw;
  } catch (const RuntimeError& errore) {
    ScriviSenzaMemoria(errore.Number(), errore.Text(), errore.Note(), andamento.Frase(errore.Outcome()));
  } catch (const std::bad_alloc&) {
    ScriviSenzaMemoria(errors::OutOfMemory, "Memoria insufficiente", {}, andamento.Frase());
  } catch (const std::exception& errore) {
    ScriviSenzaMemoria(errors::InternalError, "Errore interno:", errore.what(), andamento.Frase());
  } catch (...) {
    ScriviSenzaMemoria(errors::InternalError, "Errore interno", {}, andamento.Frase());
  }
}

/// Memory that is short at one moment may be there at the next.
void Racconta() noexcept {
  for (int volta = 0; volta < 2; ++volta) {
    try {
      Mostra();
      return;
    } catch (...) { // NOLINT(bugprone-empty-catch): tried again, and then told without memory
    }
  }
  ScriviSenzaMemoria();
}

/// Tells of a call that came while another one ran, or on a thread that may not show windows. The person sees it once:
/// a timer would heap up boxes for as long as the first of them is open.
void Rifiuta(const Turn& turno) noexcept {
  static std::atomic<bool> aperto{false};
  ScriviErrore({turno.Reason()});
  if (turno.How() == Turn::Outcome::Nested && !aperto.exchange(true)) {
    try {
      ActiveServices().desktop().ShowBox(turno.Reason(), NomeProdotto);
    } catch (...) { // NOLINT(bugprone-empty-catch): the standard error has the reason already
    }
    aperto = false;
  }
}

/// What a call changes for its caller, until it ends.
class PerIlChiamante {
 public:
  explicit PerIlChiamante(Chiamata& chiamata)
      : ascolto_(chiamata.messaggio), prima_(std::exchange(ActiveServices().callersWindow, chiamata.finestraMadre)) {}
  PerIlChiamante(const PerIlChiamante&) = delete;
  PerIlChiamante& operator=(const PerIlChiamante&) = delete;
  ~PerIlChiamante() { ActiveServices().callersWindow = prima_; }

 private:
  AscoltoMessaggi ascolto_;
  unsigned long prima_;
};

} // namespace

std::string EseguiLumoScad(std::string_view comando, Chiamata* chiamata) noexcept {
  const Turn turno(Turn::Who::Command);
  if (turno.How() != Turn::Outcome::Taken) {
    if (chiamata != nullptr) {
      chiamata->rifiutata = true;
      chiamata->perche = turno.Reason();
    }
    Rifiuta(turno);
    return "error";
  }
  std::optional<PerIlChiamante> perIlChiamante;
  if (chiamata != nullptr) {
    perIlChiamante.emplace(*chiamata);
  }
  try {
    return Esegui(comando);
  } catch (...) {
    Racconta();
  }
  return "error";
}

} // namespace lumoscad

extern "C" size_t lumoscad_esegui_n(const char* comando, size_t lunghezza, char* risultato, size_t dimensione) {
  const std::string_view riga = comando == nullptr ? std::string_view() : std::string_view(comando, lunghezza);
  return lumoscad::Destinazione(risultato, dimensione).Aggiungi(lumoscad::EseguiLumoScad(riga));
}

extern "C" size_t lumoscad_esegui(const char* comando, char* risultato, size_t dimensione) {
  return lumoscad_esegui_n(comando, comando == nullptr ? 0 : std::string_view(comando).size(), risultato, dimensione);
}
