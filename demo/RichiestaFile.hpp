#pragma once

#include <cstddef>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

namespace lumoscad::demo {

/// A request that the back end refuses; the text is Italian and becomes the ERRORE of the answer.
class Rifiuto final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Checks the content of a bank request file: lines of eleven fields, each ended by CR LF. `contiBloccati` are the
/// account codes that are refused. Returns the number of instalments; raises `Rifiuto` that names line and field.
[[nodiscard]] std::size_t ControllaCanalizzazione(std::string_view contenuto,
                                                  const std::set<std::string>& contiBloccati);

/// The same for the bank request file of presumed documents: an item has no number here, the document's year has two
/// digits, the three due dates and the instalment number are empty, and both banks are given, "#null#" for none.
/// Returns the number of documents.
[[nodiscard]] std::size_t ControllaBancaPresunti(std::string_view contenuto,
                                                 const std::set<std::string>& contiBloccati);

/// The same for a delivery request file, whose lines have seven fields: account, series, number and year of the
/// document, then present, original and new delivery date in eight digits, "00000000" for none. Returns the number of
/// deliveries.
[[nodiscard]] std::size_t ControllaConsegna(std::string_view contenuto, const std::set<std::string>& contiBloccati);

/// The same for a due-date request file, whose lines have four fields: account, item, original and new due date, the
/// dates in eight digits, "00000000" for no original one.
[[nodiscard]] std::size_t ControllaScadenze(std::string_view contenuto, const std::set<std::string>& contiBloccati);

} // namespace lumoscad::demo
