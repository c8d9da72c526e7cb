#include "database/RicercaEsito.hpp"

#include "platform/ado/Aftermath.hpp"

#include <algorithm>
#include <memory>
#include <thread>

namespace lumoscad::moduloDatabase {
namespace {

using Orologio = std::chrono::steady_clock;
using Righe = ado::Aftermath::Rows;

constexpr std::chrono::seconds AttesaMassima(20);
/// A database that is a file is there at once, or its disk is failing.
constexpr std::chrono::seconds AttesaFile(1);
/// How long an old session is left to end by itself.
constexpr std::chrono::seconds AttesaSessione(5);
constexpr std::chrono::milliseconds PrimaPausa(10);
constexpr std::chrono::milliseconds PausaMassima(250);

/// The pauses between two questions, each longer than the one before, and the time at which there is no other.
class Attesa {
 public:
  explicit Attesa(std::chrono::seconds durata) : Attesa(Orologio::now() + durata) {}
  explicit Attesa(Orologio::time_point termine) : termine_(termine) {}

  [[nodiscard]] Orologio::time_point Termine() const noexcept { return termine_; }
  [[nodiscard]] bool Finita() const noexcept { return Orologio::now() >= termine_; }
  [[nodiscard]] bool SessioneAttesa() const noexcept { return Orologio::now() >= inizio_ + AttesaSessione; }
  void Pausa() {
    const auto resto = std::chrono::duration_cast<std::chrono::milliseconds>(termine_ - Orologio::now());
    std::this_thread::sleep_for(std::max(std::min(pausa_, resto), std::chrono::milliseconds(0)));
    pausa_ = std::min(pausa_ * 2, PausaMassima);
  }

 private:
  Orologio::time_point inizio_ = Orologio::now();
  Orologio::time_point termine_;
  std::chrono::milliseconds pausa_ = PrimaPausa;
};

/// What all rows say together.
TransactionOutcome DiconoLeRighe(ado::Connection& connection, const std::vector<Riscontro>& riscontri) {
  std::optional<TransactionOutcome> esito;
  for (const Riscontro& riscontro : riscontri) {
    const auto detto = riscontro(connection);
    if (detto && esito.value_or(*detto) != *detto) {
      return TransactionOutcome::Unknown;
    }
    esito = detto ? detto : esito;
  }
  return esito.value_or(TransactionOutcome::Unknown);
}

/// Asks once; nothing where it is to be asked again.
std::optional<TransactionOutcome> Chiedi(ado::Connection& connection, const ado::TransactionMark& segno,
                                         const std::vector<Riscontro>& riscontri, bool sessioneAttesa) {
  const auto trovato = ado::LookBack(connection, segno);
  if (trovato.rows == Righe::SayNothing) {
    if (trovato.lingers && sessioneAttesa) {
      ado::EndSession(connection, segno);
    }
    return std::nullopt;
  }
  const auto righe = DiconoLeRighe(connection, riscontri);
  if (trovato.rows == Righe::SayIfDone) {
    return righe == TransactionOutcome::Applied ? std::optional(righe) : std::nullopt;
  }
  return trovato.number.value_or(righe) == righe ? righe : TransactionOutcome::Unknown;
}

} // namespace

TransactionOutcome CercaEsito(const ParametriConnessione& parametri, const ado::TransactionMark& segno,
                              const std::vector<Riscontro>& riscontri) noexcept {
  try {
    const bool file = segno.session.empty();
    Attesa attesa(file ? AttesaFile : std::min(AttesaMassima, ado::LongestWait()));
    std::unique_ptr<ado::Connection> connection;
    for (; !attesa.Finita(); attesa.Pausa()) {
      try {
        if (!connection) {
          connection = ApriPerEsito(parametri, attesa.Termine());
        }
        if (const auto esito = Chiedi(*connection, segno, riscontri, attesa.SessioneAttesa())) {
          return *esito;
        }
      } catch (const RuntimeError& errore) {
        if (!connection && ado::RefusedForGood(errore)) {
          break;
        }
        connection.reset(); // a server that does not answer, or not yet, tells nothing
      }
    }
  } catch (...) { // NOLINT(bugprone-empty-catch): what cannot be found out stays unknown
  }
  return TransactionOutcome::Unknown;
}

void ConfermaOCerca(Transazione& transazione, ado::Connection& connection, const ParametriConnessione& parametri,
                    const std::vector<Riscontro>& riscontri, std::optional<TransactionOutcome>& esito) {
  try {
    transazione.Conferma();
  } catch (const RuntimeError& errore) {
    const auto segno = connection.InDoubt();
    if (!segno) {
      throw;
    }
    ChiudiConnessione(&connection);
    esito = CercaEsito(parametri, *segno, riscontri);
    if (esito == TransactionOutcome::Unknown) {
      throw;
    }
    if (esito == TransactionOutcome::NotApplied) {
      throw ado::KnownNotApplied(errore);
    }
  }
}

DettoDalServer ChiediAlServer(ado::Connection& connection, const ado::TransactionMark& segno,
                              Orologio::time_point termine) {
  try {
    for (Attesa attesa(termine);; attesa.Pausa()) {
      const auto trovato = ado::LookBack(connection, segno);
      if (!trovato.pending || attesa.Finita()) {
        return {trovato.pending, trovato.rows == Righe::SayIfDone, trovato.rows == Righe::SayNothing, trovato.number};
      }
    }
  } catch (const RuntimeError&) {
    return {false, false, true, std::nullopt};
  }
}

} // namespace lumoscad::moduloDatabase
