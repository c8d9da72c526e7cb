#pragma once

#include "screens/ImportoEsatto.hpp"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace lumoscad {

class Griglia;

/// Sums of amounts, one a currency; nothing is ever added across currencies.
class SommePerDivisa {
 public:
  void Aggiungi(std::string_view divisa, const ImportoEsatto& importo);
  /// "1.584,36 €; 20,00 USD", by currency; "€" is written for one without a name.
  [[nodiscard]] std::string Testo() const;

 private:
  std::vector<std::pair<std::string, ImportoEsatto>> somme_;
};

/// "1.584,36 €", "20,00 USD".
[[nodiscard]] std::string ConDivisa(const ImportoEsatto& importo, std::string_view divisa);

/// The currency of a row's amount; empty for the euro of a list that shows no currencies.
[[nodiscard]] std::string_view DivisaDiRiga(const Griglia& griglia, std::size_t riga);

/// The amounts of rows, by currency. A row whose amount cannot be read counts nothing.
[[nodiscard]] SommePerDivisa SommaRighe(const Griglia& griglia, const std::vector<std::size_t>& righe);

/// What the changes of a list come to: the amounts of all its rows by bank and by month of their date, as they are and
/// as they will be. The list is counted once, after that the changed rows alone.
class EffettoVariazioni {
 public:
  enum class Genere { Banca, Mese };

  /// The amounts of one bank or month in one currency.
  struct Voce {
    std::string chiave; ///< the bank's code, or "YYYYMM"; empty for none
    std::string nome;   ///< as shown
    std::string divisa;
    ImportoEsatto prima;
    ImportoEsatto dopo;
    std::size_t righePrima = 0;
    std::size_t righeDopo = 0;
  };

  explicit EffettoVariazioni(const Griglia& griglia) : griglia_(griglia) {}

  /// The rows are others: they are counted anew when they are next asked for.
  void Azzera();
  /// Whether the list can change this at all.
  [[nodiscard]] bool Riguarda(Genere genere) const;
  /// Banks by name, months by time, what has none of it last.
  [[nodiscard]] std::vector<Voce> Voci(Genere genere, const std::vector<std::size_t>& variate);

  /// The rows behind an entry: those that have its bank or month in its currency, as they are or as they will be.
  class RigheDietro {
   public:
    RigheDietro(const EffettoVariazioni& effetto, Genere genere, const Voce& voce)
        : effetto_(&effetto), genere_(genere), chiave_(voce.chiave), divisa_(voce.divisa) {}

    /// What became of a bank, a day and a currency is kept for the next row that has them.
    [[nodiscard]] bool Contiene(std::size_t riga) const;
    [[nodiscard]] bool Di(Genere genere, const Voce& voce) const {
      return genere == genere_ && voce.chiave == chiave_ && voce.divisa == divisa_;
    }

   private:
    const EffettoVariazioni* effetto_;
    Genere genere_;
    std::string chiave_;
    std::string divisa_;
    mutable std::unordered_map<std::uint64_t, bool> note_;
  };

 private:
  using Conti = std::map<std::pair<std::string, std::string>, Voce>; ///< by key and currency
  /// Few banks, days and currencies stand in many rows: each pair of their texts' numbers is looked up once.
  using NumeriNoti = std::unordered_map<std::uint64_t, Voce*>;

  /// Names what a row has for the table of what is known.
  [[nodiscard]] std::uint64_t Numeri(Genere genere, std::size_t riga, bool dopo) const;
  [[nodiscard]] std::string Chiave(Genere genere, std::size_t riga, bool dopo) const;
  [[nodiscard]] std::string Nome(Genere genere, std::size_t riga, const std::string& chiave, bool dopo) const;
  [[nodiscard]] Voce& VoceDi(Conti& conti, Genere genere, std::size_t riga, bool dopo) const;
  /// `VoceDi` for rows that are changed where `dopo` asks for what they will be.
  [[nodiscard]] Voce& VoceNota(NumeriNoti& noti, Conti& conti, Genere genere, std::size_t riga, bool dopo) const;
  void Conta(Genere genere);

  const Griglia& griglia_;
  std::map<Genere, Conti> conti_; ///< of the rows as they are
};

} // namespace lumoscad
