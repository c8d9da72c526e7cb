#pragma once

#include "common/Testo.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// A command line as its readers walk it: its tokens, one between every two blanks, so that two blanks in a row hold
/// an empty one.
class RigaComando {
 public:
  explicit RigaComando(std::string_view comando);

  /// Hands every token to `passo(nome, posto)`, from the first to the last: in upper case, as names are compared, and
  /// with its place. The value of an option is a token like any other and comes in its turn.
  template <typename Passo> void Percorri(Passo passo) const {
    for (std::size_t posto = 0; posto < pezzi_.size(); ++posto) {
      passo(Maiuscolo(pezzi_[posto]), posto);
    }
  }

  /// The token at `posto` as written; none behind the last one.
  [[nodiscard]] const std::string* Pezzo(std::size_t posto) const noexcept;

  /// The same for a value that must be there: raises error 9, saying that `nome` is missing.
  [[nodiscard]] const std::string& Valore(std::size_t posto, std::string_view nome) const;

 private:
  std::vector<std::string> pezzi_;
};

} // namespace lumoscad
