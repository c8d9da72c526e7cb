#pragma once

#include "common/Nota.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The texts of a note's files: lines of a name, "=" and a value, between a line that tells the version and one that
/// tells the end.
namespace lumoscad::testoNota {

inline constexpr int Versione = 1;

/// What a note's text is made of, without a copy of a list of thousands.
struct Contenuto {
  DateTime inizio;
  std::string_view postazione;
  long processo = 0;
  std::string_view tipoComando;
  std::string_view azienda;
  std::string_view host;
  std::string_view programma;
  std::string_view richiesta;
  std::string_view origineDati;
  const std::vector<std::string>& parametriHost;
  std::string_view modifica; ///< as `DiModifica` makes it
  DatoAccesso utente{};
  DatoAccesso schema{};
};

/// The lines of a change.
[[nodiscard]] std::string DiModifica(std::string_view tipo, const VariazioniCanalizzazione& variazioni);
[[nodiscard]] std::string DiModifica(ModificaChiesta::Genere genere, std::string_view tipo,
                                     const VariazioniConsegna& variazioni);
[[nodiscard]] std::string DiModifica(const std::vector<std::string>& parametri);
[[nodiscard]] std::string DiModifica(const ModificaChiesta& modifica);

[[nodiscard]] std::string DiNota(const Contenuto& contenuto);

/// What a phase's text is made of.
struct Fase {
  FaseNota fase = FaseNota::Avviata;
  DateTime momento;
  std::string_view rispostaHost;
  std::string_view transazione;
};

/// Adds to an empty `testo`; takes no memory where that has enough.
void ComponiFase(std::string& testo, const Fase& fase, const std::vector<std::string>& righeRimaste);

[[nodiscard]] std::string DiArchivio(const ArchivioNota& archivio);

/// Read the text of a file into `nota`. Raise error 13 with an Italian text for one that is none, that was cut off, or
/// of a later version; fields that are not known are skipped.
void LeggiContenuto(std::string_view testo, Nota& nota);
void LeggiFase(std::string_view testo, Nota& nota);
void LeggiArchivio(std::string_view testo, Nota& nota);

} // namespace lumoscad::testoNota
