#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lumoscad {

/// A setting by which a command reaches its database, as a note may hold it.
struct DatoAccesso {
  bool detto = false;     ///< a note of before it was kept has none
  bool riservato = false; ///< its text is the password's, or holds it, and is kept nowhere
  std::string valore;
};

/// The settings of the database on a command line, the password among them: for as long as they are compared or
/// written down, never longer.
class AccessoComando {
 public:
  /// Names count in any case, and the last occurrence wins. What stands behind a ";" is no part of a value, and could
  /// be a password.
  explicit AccessoComando(std::string_view comando);

  /// The data source's name.
  [[nodiscard]] const std::string& Origine() const noexcept { return origine_; }
  /// What a note may hold of the user, and of the schema that is in force.
  [[nodiscard]] DatoAccesso Utente() const { return DaTenere(utente_); }
  [[nodiscard]] DatoAccesso Schema() const { return DaTenere(schema_); }

  enum class Confronto { Uguale, Diverso, NonSiSa };
  /// Whether a note that holds this was written with the same user. One of two that names none may still have been the
  /// same: the data source has one of its own.
  [[nodiscard]] Confronto ConfrontaUtente(const DatoAccesso& tenuto) const;
  /// The same of the schema. A command that named none has used none.
  [[nodiscard]] Confronto ConfrontaSchema(const DatoAccesso& tenuto) const;

 private:
  [[nodiscard]] DatoAccesso DaTenere(const std::string& valore) const;
  /// What can be said without the texts; nothing where they are to be compared.
  [[nodiscard]] std::optional<Confronto> SenzaTesti(const DatoAccesso& tenuto, const std::string& valore) const;

  std::string origine_;
  std::string utente_;
  std::string schema_;
  std::string parolaDOrdine_;
};

} // namespace lumoscad
