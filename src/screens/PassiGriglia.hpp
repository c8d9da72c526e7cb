#pragma once

#include "screens/InsiemeRighe.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// What stands in the fields at the top of a grid, as a step back brings it back.
struct CampiInAlto {
  std::string data;
  int banca = 0;
  int schermata = 0; ///< what else the screen shows of its own

  [[nodiscard]] bool operator==(const CampiInAlto&) const = default;
};

/// One cell that a gesture wrote: the numbers of what stood there before and after it.
struct CellaScritta {
  std::uint32_t riga = 0;
  std::uint32_t prima = 0;
  std::uint32_t dopo = 0;
};

/// What one gesture did. Rows are named by their numbers, so that no order and no filter matters to it.
struct PassoGriglia {
  /// The cells of one kind, in the order in which they were written.
  struct Scritte {
    int campo = 0; ///< which text, tag or tick of a row, as the grid counts them
    std::vector<CellaScritta> celle;
  };

  std::string nome;      ///< what was done, for instance "banca"
  bool conRighe = true;  ///< its name tells how many rows it changed
  bool unibile = false;  ///< the next gesture of the same name belongs to it
  std::size_t righe = 0; ///< how many rows it changed
  CampiInAlto altoPrima;
  CampiInAlto altoDopo;
  std::vector<Scritte> scritte;
};

/// The steps of a person at a grid, back and forth without limit. What is written between `Comincia` and `Chiudi` is
/// one step; a step that begins inside another belongs to it. A step that wrote nothing is none.
class PassiGriglia {
 public:
  enum class Unione {
    Nessuna,
    ConPrecedente ///< continues the last step, if that has the same name and this is of its kind too
  };

  void Svuota();
  void Comincia(std::string_view nome, bool conRighe, Unione unione, const CampiInAlto& alto);
  void Chiudi(const CampiInAlto& alto) noexcept;
  /// A cell is about to be written, by a gesture or by what belongs to none. Says nothing where it stays as it is.
  void Annota(int campo, std::size_t riga, std::uint32_t prima, std::uint32_t dopo);

  [[nodiscard]] bool Aperto() const noexcept { return dentro_ > 0; }
  /// The rows that the gesture changed that runs, or else the last one.
  [[nodiscard]] const InsiemeRighe& Mosse() const noexcept { return mosse_; }
  /// The step that would be taken back, or done again; null where there is none.
  [[nodiscard]] const PassoGriglia* DaAnnullare() const { return fatti_ == 0 ? nullptr : &passi_[fatti_ - 1]; }
  [[nodiscard]] const PassoGriglia* DaRifare() const { return fatti_ == passi_.size() ? nullptr : &passi_[fatti_]; }
  /// It was taken back, or done again.
  void Annullato();
  void Rifatto();
  /// The bytes that the steps hold.
  [[nodiscard]] std::size_t Memoria() const;

 private:
  std::vector<PassoGriglia> passi_;
  std::size_t fatti_ = 0; ///< the others, behind them, were taken back
  PassoGriglia corrente_;
  InsiemeRighe mosse_;
  int dentro_ = 0; ///< gestures that run, one inside the other
  bool unito_ = false;
};

} // namespace lumoscad
