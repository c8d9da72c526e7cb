#pragma once

#include "platform/ado/Handles.hpp"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::bench {

/// A plain program's connection.
class ConnessioneNuda {
 public:
  /// `testoConnessione` is a connection text of the component; the driver gets the same settings.
  explicit ConnessioneNuda(const std::string& testoConnessione);
  ConnessioneNuda(const ConnessioneNuda&) = delete;
  ConnessioneNuda& operator=(const ConnessioneNuda&) = delete;
  ~ConnessioneNuda();

  [[nodiscard]] SQLHANDLE get() const noexcept { return connessione_.get(); }

 private:
  ado::interno::Handle<SQL_HANDLE_ENV> ambiente_{SQLHANDLE{nullptr}};
  ado::interno::Handle<SQL_HANDLE_DBC> connessione_;
};

/// A plain program's statement, prepared once and sent as often as one likes: columns bound as text in buffers like the
/// component's, four bytes a character.
class ComandoNudo {
 public:
  /// Reads up to `righe` rows at a time, fewer when they are wide.
  ComandoNudo(const ConnessioneNuda& connessione, std::string_view istruzione, std::size_t righe = 1024);
  ComandoNudo(const ComandoNudo&) = delete;
  ComandoNudo& operator=(const ComandoNudo&) = delete;
  ~ComandoNudo() = default;

  /// Sends it with these texts and reads every row; `riga`, where it is given, is called with the place of each in its
  /// block. Returns how many rows there were.
  std::size_t Esegui(std::vector<std::string> parametri, const std::function<void(std::size_t)>& riga = nullptr);
  /// A text of the block just read; the empty text where it is null.
  [[nodiscard]] std::string_view Testo(std::size_t riga, std::size_t colonna) const;

 private:
  void Collega();

  ado::interno::Handle<SQL_HANDLE_STMT> comando_;
  std::size_t righe_;
  std::vector<std::size_t> spazi_; ///< bytes of a text of each column
  std::vector<char*> colonne_;     ///< the first text of each column
  std::unique_ptr<char[]> testi_;
  std::vector<SQLLEN> lunghezze_;
  SQLULEN lette_ = 0;
};

} // namespace lumoscad::bench
