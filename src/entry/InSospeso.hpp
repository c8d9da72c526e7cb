#pragma once

#include "common/Nota.hpp"
#include "database/EsameRighe.hpp"
#include "database/moduloDatabase.hpp"
#include "lumoscad/Host.hpp"
#include "platform/ado/Ado.hpp"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// The notes that are left, oldest first, and then those that were put aside. With the "-DB2..." options in `comando`
/// each one's rows are looked up in that database; a blank line asks no database. What fails is told where it belongs.
[[nodiscard]] ElencoInSospeso GuardaInSospeso(std::string_view comando);

/// The same for one note; a name that is none of a note's is an error.
[[nodiscard]] NotaInSospeso GuardaNota(std::string_view nome, std::string_view comando);

/// Carries out what `vista` asks for, unless it has changed since it was looked at. The database's failures are told in
/// what is returned.
[[nodiscard]] EsitoInSospeso RiallineaVista(const NotaInSospeso& vista, std::string_view comando);

/// Puts a note aside with the reason that a person gives.
[[nodiscard]] EsitoInSospeso Archivia(std::string_view nome, std::string_view motivo);

/// The directory in which commands leave their notes.
[[nodiscard]] const std::string& CartellaNote();

/// The rows of a note in the database that a command line names. It is opened when it is first asked, and once.
class EsameNote {
 public:
  explicit EsameNote(std::string_view comando);

  /// Whether the command line names a database at all.
  [[nodiscard]] bool ConBaseDati() const noexcept { return conBaseDati_; }
  /// Whether that database is the note's own, by the data source's name.
  [[nodiscard]] bool OrigineUguale(const Nota& nota) const;
  /// What it holds of the note's rows. Raises the driver's failure, the same again where the opening failed.
  [[nodiscard]] std::vector<procedureLumoDB2::RigaEsaminata> Righe(const Nota& nota);
  /// Opens it anew when it is next asked.
  void Chiudi() noexcept;

 private:
  moduloDatabase::ParametriConnessione parametri_;
  bool conBaseDati_;
  std::unique_ptr<ado::Connection> connection_;
  std::unique_ptr<RuntimeError> rifiuto_; ///< why it could not be opened
};

/// A note as the person reads it. `righe` is what the database holds; none where it was not asked.
[[nodiscard]] NotaInSospeso Racconta(const Nota& nota,
                                     const std::vector<procedureLumoDB2::RigaEsaminata>* righe = nullptr);

/// The rows, a line each, with what became of them.
[[nodiscard]] std::string TestoRighe(const std::vector<procedureLumoDB2::RigaEsaminata>& righe);

/// How many of the rows are in a state.
[[nodiscard]] std::size_t Quante(const std::vector<procedureLumoDB2::RigaEsaminata>& righe,
                                 procedureLumoDB2::StatoRiga stato);

} // namespace lumoscad
