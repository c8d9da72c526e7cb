#pragma once

#include <exception>
#include <optional>
#include <string>
#include <string_view>
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

/// What became of a change: a transaction of the database, or what a program on the host was asked to do.
enum class EsitoTransazione {
  NonApplicata, ///< nothing of it is kept; of a transaction also before the first and while one is open
  Applicata,    ///< it is kept as a whole, and whoever keeps it said so
  Sconosciuta ///< it was asked for, and no answer to trust came back: all of it may be kept, or nothing. Or a database
              ///< driver connected anew in the middle, and a part may be kept
};

/// The one exception type of the component: number, description and source, as its callers show them.
class ErroreRuntime final : public std::exception {
 public:
  /// `descrizione` is Italian text for the person; it may be empty where `sorgente` says it all.
  ErroreRuntime(int numero, std::string descrizione, std::string sorgente = "LumoScad")
      : numero_(numero), descrizione_(std::move(descrizione)), sorgente_(std::move(sorgente)) {}

  [[nodiscard]] int Numero() const noexcept { return numero_; }
  [[nodiscard]] const std::string& Descrizione() const noexcept { return descrizione_; }
  [[nodiscard]] const std::string& Sorgente() const noexcept { return sorgente_; }

  /// Sentences that explain the description to the person; they stand at the very end of every text that is made of it.
  [[nodiscard]] const std::string& Nota() const noexcept { return nota_; }
  /// The SQLSTATE of a failure that a database driver reported, else empty; and the server's own number, else 0.
  [[nodiscard]] const std::string& SqlState() const noexcept { return sqlState_; }
  [[nodiscard]] long CodiceNativo() const noexcept { return codiceNativo_; }
  /// What became of the change that failed, where the place that raised this knows and says it.
  [[nodiscard]] std::optional<EsitoTransazione> Esito() const noexcept { return esito_; }

  ErroreRuntime&& ConNota(std::string nota) && {
    nota_ = std::move(nota);
    return std::move(*this);
  }
  ErroreRuntime&& ConStato(std::string_view sqlState, long codiceNativo) && {
    sqlState_ = sqlState;
    codiceNativo_ = codiceNativo;
    return std::move(*this);
  }
  ErroreRuntime&& ConEsito(std::optional<EsitoTransazione> esito) && {
    esito_ = esito;
    return std::move(*this);
  }

  /// What a person reads: the description, or the source where there is no description.
  [[nodiscard]] const std::string& Testo() const noexcept { return descrizione_.empty() ? sorgente_ : descrizione_; }
  [[nodiscard]] const char* what() const noexcept override { return Testo().c_str(); }

 private:
  int numero_;
  std::string descrizione_;
  std::string sorgente_;
  std::string nota_;
  std::string sqlState_;
  long codiceNativo_ = 0;
  std::optional<EsitoTransazione> esito_;
};

/// `testo`, and on a line of its own `frase`, where there is one.
[[nodiscard]] std::string ConFrase(std::string testo, std::string_view frase);

/// Turns the exception in flight into an `ErroreRuntime`; call it inside a catch block only.
/// Memory exhaustion becomes number 7, any other foreign exception number 51 with its text.
[[nodiscard]] ErroreRuntime ErroreCorrente();

} // namespace lumoscad
