#pragma once

#include "Uccisione.hpp"

#include <filesystem>
#include <string>
#include <vector>

namespace lumoscad::test {

/// What a line of a command's table says of the steps that it stands for.
[[nodiscard]] std::string Esito(const Osservazione& vista);

/// A run of steps after which the same is found.
struct Linea {
  std::string primo;  ///< name of the first step
  std::string ultimo; ///< and of the last
  std::string esito;
};

/// The table of one command.
[[nodiscard]] std::string Tabella(const Testi& passi, const std::vector<Osservazione>& viste);

/// The lines of a command's table in a page.
[[nodiscard]] std::vector<Linea> LeggiTabella(const std::string& sezione);

/// The part of a page from the heading "## `titolo`" to the next one, heading included; empty where there is none.
[[nodiscard]] std::string Sezione(const std::filesystem::path& pagina, const std::string& titolo);

/// The beginning of the page of tables.
[[nodiscard]] std::string Intestazione();

} // namespace lumoscad::test
