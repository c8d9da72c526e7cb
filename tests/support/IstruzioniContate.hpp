#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::prova {

/// What the program hands to the driver manager: a program that links this has its SQLPrepare and SQLExecute counted on
/// their way. From its making to its end, for one thread.
class IstruzioniContate {
 public:
  IstruzioniContate();
  IstruzioniContate(const IstruzioniContate&) = delete;
  IstruzioniContate& operator=(const IstruzioniContate&) = delete;
  ~IstruzioniContate();

  /// How many statements that begin like this were prepared.
  [[nodiscard]] std::size_t Preparate(std::string_view inizio) const;
  /// How many times such statements were executed after they had been prepared.
  [[nodiscard]] std::size_t Eseguite(std::string_view inizio) const;

  // What the layer tells.
  void Preparata(const void* istruzione, std::string_view testo);
  void Eseguita(const void* istruzione);

 private:
  struct Preparazione {
    std::string testo;
    std::size_t esecuzioni;
  };
  std::vector<Preparazione> preparazioni_;
  std::map<const void*, std::size_t> ultime_; ///< the last preparation of each handle: handles come back
};

} // namespace lumoscad::prova
