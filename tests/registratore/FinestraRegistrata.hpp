#pragma once

#include "Registro.hpp"

#include "platform/Desktop.hpp"

#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace lumoscad::prova {

/// A list window whose gestures are written into a record on their way to the screen, each with what it changed. The
/// screen's own window must stay where it is.
class FinestraRegistrata {
 public:
  FinestraRegistrata(Registro& registro, const FinestraElenco& vera);
  FinestraRegistrata(Registro& registro, const FinestraScadenzario& vera);
  FinestraRegistrata(const FinestraRegistrata&) = delete;
  FinestraRegistrata& operator=(const FinestraRegistrata&) = delete;

  /// What the desktop is to show.
  [[nodiscard]] FinestraElenco Elenco();
  [[nodiscard]] FinestraScadenzario Scadenzario();
  /// The window as it opens.
  void Descrivi();

 private:
  struct Aspetto {
    std::vector<std::string> stato; ///< "name value"
    std::vector<std::string> righe; ///< the cells of a row, in display order
  };

  [[nodiscard]] std::vector<std::string> Riga(std::size_t riga) const;
  [[nodiscard]] Aspetto Guarda() const;
  void DescriviRighe(const std::vector<std::string>& righe);
  void Differenze(const Aspetto& prima, const Aspetto& dopo);
  void Gesto(const std::string& quale, const std::function<void()>& azione);
  [[nodiscard]] std::string ColonnaSotto(int x) const;
  template <typename... Tipi>
  void Ascolta(std::function<void(Tipi...)>& gesto, std::type_identity_t<std::function<std::string(Tipi...)>> nome);

  Registro& registro_;
  FinestraElenco vera_;
  FinestraScadenzario scadenzario_; ///< empty for a plain list
};

} // namespace lumoscad::prova
