#pragma once

#include "Modello.hpp"
#include "Registro.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace lumoscad::test {

/// A row's change in the database's own log.
struct Cambio {
  std::string chiave;
  std::optional<std::string> prima;
  std::optional<std::string> dopo;
};

/// A transaction of the database's own log.
struct Conferma {
  std::string comando; ///< the name of the command whose session it was
  Istante ora = 0;
  std::vector<Cambio> cambi;
};

/// A time without the server that the terminals worked with.
struct Caduta {
  Istante dalla = 0;
  Istante alla = 0;
};

/// What came of comparing the commands with the database.
struct Riscontro {
  std::size_t confermati = 0;   ///< commands with a transaction
  std::size_t inOrdine = 0;     ///< ... whose changes are exactly what the request asks of the database that it found
  std::size_t sovrapposti = 0;  ///< ... or of one that it may have found row by row, while another one was committed
  std::size_t senzaEffetto = 0; ///< accepted commands that found nothing left to change
  std::size_t lineePerse = 0;   ///< lines of accepted requests, of commands that answered well, that changed no row
  std::size_t detti = 0;        ///< accepted by the host, refused by the database, and said so
  std::size_t perduti = 0;      ///< ... of these, since the server was lost
  std::size_t ignoti = 0;       ///< ... and with a message that does not know whether the change was kept
  std::size_t ignotiTenuti = 0; ///< ... which was kept
  std::vector<std::string> errori; ///< whatever must not be
};

/// Compares: every transaction belongs to one accepted command and changes what that command asks for, every accepted
/// command has its transaction unless nothing was left to change, and the changes in the order of the commits lead from
/// `iniziale` to `finale`. A command that was at work during one of `cadute` may have failed by it: when it says that
/// the database kept nothing, this must be so; when it does not know, both may be.
[[nodiscard]] Riscontro Confronta(const Modello& modello, const Stato& iniziale, const Stato& finale,
                                  const std::vector<Conferma>& conferme, const std::vector<Eseguito>& comandi,
                                  const std::vector<Caduta>& cadute = {});

} // namespace lumoscad::test
