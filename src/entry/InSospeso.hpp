#pragma once

#include "common/Nota.hpp"
#include "database/EsameRighe.hpp"
#include "entry/EsameNote.hpp"
#include "lumoscad/Host.hpp"

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

/// A note as the person reads it. `esame` is what the database holds; none where it was not asked.
[[nodiscard]] NotaInSospeso Racconta(const Nota& nota, const EsitoEsame* esame = nullptr);

/// The rows, a line each, with what became of them.
[[nodiscard]] std::string TestoRighe(const std::vector<procedureLumoDB2::RigaEsaminata>& righe);

} // namespace lumoscad
