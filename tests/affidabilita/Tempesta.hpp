#pragma once

#include "Gruppo.hpp"
#include "Persona.hpp"
#include "Sgombero.hpp"
#include "Sistema.hpp"
#include "Storia.hpp"

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace lumoscad::test {

/// How long a storm lasts, and what it is made of.
struct Previsione {
  unsigned seme = 0; ///< of what is drawn: commands, deaths, cuts, losses. How they meet is the machine's doing
  std::chrono::milliseconds durata{};
  std::chrono::milliseconds proroga{};    ///< at most that much longer, until there was a death, a cut and a loss
  std::chrono::milliseconds pausa{};      ///< the longest pause of a terminal between two commands
  std::chrono::milliseconds vita{};       ///< the longest life of a terminal
  std::chrono::milliseconds calma{};      ///< the longest time from one cut to the next
  std::chrono::milliseconds fraPerdite{}; ///< from one loss of a server to the next, at least half of it
};

/// Eight terminals at work, half of them over SSH, while they are killed, their connections to database and host are
/// cut, and servers of the database are lost.
class Tempesta {
 public:
  static constexpr int Terminali = 8;
  /// The terminals' names, which the database knows them by.
  [[nodiscard]] static Testi Utenti();

  Tempesta(Sistema& sistema, Gruppo& gruppo, const Misura& misura, const Previsione& previsione);
  /// Returns when no terminal works any more and all servers are there. Notes, and files on the host, are left.
  void Infuria();

  struct Conto {
    std::size_t morti = 0;
    std::size_t nelComando = 0; ///< ... in the middle of a command
    std::size_t tagliBase = 0;  ///< cuts of the connections to the database
    std::size_t tagliHost = 0;  ///< ... to the host
    std::size_t perdite = 0;    ///< servers lost
    std::size_t blocchi = 0;    ///< locks that the administrator took away
  };
  Conto conto;
  std::vector<Caduta> cadute;      ///< the times of cuts and losses
  std::vector<std::string> errori; ///< whatever must not be
  Sgombero sgombero;

 private:
  using Orologio = std::chrono::steady_clock;
  struct Terminale {
    Terminale(std::string nome, const Misura& misura, unsigned seme)
        : postazione(std::move(nome)), persona(misura, seme) {}
    std::string postazione;
    Persona persona;
    std::optional<Famiglia> famiglia;
    Orologio::time_point morte;
    bool colto = false; ///< it is in a command, and dies in the middle of it
  };
  struct Taglio {
    ByteProxy* passaggio;
    bool base; ///< towards the database
    Orologio::time_point scadenza;
  };

  int Fra(int minimo, int massimo);
  std::chrono::milliseconds FinoA(std::chrono::milliseconds massimo);
  bool ConSsh(const Terminale& terminale) const;
  void Parti(Terminale& terminale);
  [[nodiscard]] std::string Comando(Terminale& terminale);
  void Finisce(Terminale& terminale);
  [[nodiscard]] bool InComando(const Terminale& terminale) const;
  /// Kills a terminal whose time has come.
  void Uccidi(Terminale& terminale);
  void Arma();
  void Disarma();
  void GuardaTaglio();
  void Perdi();
  void TogliBlocchi(const std::string& postazione);
  [[nodiscard]] bool MancaQualcosa() const;
  void Giro();

  Sistema& sistema_;
  Gruppo& gruppo_;
  Previsione previsione_;
  std::mt19937 caso_;
  std::unique_ptr<ByteProxy> passaggioHost_;
  std::vector<Terminale> terminali_;
  std::map<std::string, int> estratti_; ///< deletions of extra movements: there is only so much to delete
  std::optional<Taglio> taglio_;
  Orologio::time_point prossimoTaglio_;
  Orologio::time_point prossimaPerdita_;
  std::optional<Orologio::time_point> riparazione_;
  Istante guardato_ = 0; ///< right before it was last looked whether a cut has struck
};

} // namespace lumoscad::test
