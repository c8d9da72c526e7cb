#pragma once

#include <exception>
#include <string>
#include <utility>

namespace lumoscad {

/// The numbers of the run-time errors that the component itself raises.
namespace errori {
inline constexpr int IndiceNonValido = 9;               ///< subscript out of range
inline constexpr int TipoNonCorrispondente = 13;        ///< type mismatch
inline constexpr int FileNonTrovato = 53;               ///< file not found
inline constexpr int AccessoAlFile = 75;                ///< path or file access error
inline constexpr int ChiaveDuplicata = 457;             ///< key already in the collection
inline constexpr int MemoriaInsufficiente = 7;          ///< out of memory
inline constexpr int ErroreInterno = 51;                ///< internal error
inline constexpr int Driver = -2147467259;              ///< a driver failure without a number of its own
inline constexpr int RicercaFallita = -2147220990;      ///< a key look-up found no single row
inline constexpr int ErroreRegistrato = -2147220954;    ///< an `Errore` recorded by a screen or an update
inline constexpr int ErroreTrasferimento = -2147220905; ///< a reply or transfer error in a request writer
} // namespace errori

/// The one exception type of the component: number, description and source, as its callers show them.
class ErroreRuntime final : public std::exception {
 public:
  /// `descrizione` is Italian text for the person; it may be empty where `sorgente` says it all.
  ErroreRuntime(int numero, std::string descrizione, std::string sorgente = "LumoScad")
      : numero_(numero), descrizione_(std::move(descrizione)), sorgente_(std::move(sorgente)) {}

  [[nodiscard]] int Numero() const noexcept { return numero_; }
  [[nodiscard]] const std::string& Descrizione() const noexcept { return descrizione_; }
  [[nodiscard]] const std::string& Sorgente() const noexcept { return sorgente_; }

  /// What a person reads: the description, or the source where there is no description.
  [[nodiscard]] const std::string& Testo() const noexcept { return descrizione_.empty() ? sorgente_ : descrizione_; }
  [[nodiscard]] const char* what() const noexcept override { return Testo().c_str(); }

 private:
  int numero_;
  std::string descrizione_;
  std::string sorgente_;
};

/// Turns the exception in flight into an `ErroreRuntime`; call it inside a catch block only.
/// Memory exhaustion becomes number 7, any other foreign exception number 51 with its text.
[[nodiscard]] ErroreRuntime ErroreCorrente();

} // namespace lumoscad
