#include "Bersagli.hpp"

#include "common/Testo.hpp"
#include "handlers/Blocco.hpp"
#include "platform/LocalFile.hpp"
#include "support/TestBench.hpp"

namespace lumoscad::fuzz {

void Blocco(Ingresso ingresso) {
  if (ingresso.empty()) {
    return;
  }
  std::string contenuto(Testo(ingresso.subspan(1)));
  // A lock longer than what is read of one.
  while ((ingresso[0] & 1U) != 0 && !contenuto.empty() && contenuto.size() <= MaxRead) {
    contenuto += contenuto;
  }
  const std::string file = "/tmp/VBCREDITI";
  test::TestBench banco;
  banco.host.file[file] = contenuto;
  const std::string chi = BloccaArea("10.0.0.1", "CREDITI");
  const std::string prima = contenuto.substr(0, contenuto.find_first_of("\r\n"));
  Esigi(MaggioreDiSpazio(chi) || chi.empty(), "un blocco di nessuno");
  Esigi(!chi.empty() || (contenuto.size() <= MaxRead && !MaggioreDiSpazio(prima)), "preso il blocco di un altro");
  if (chi.empty()) {
    Esigi(banco.desktop.box.empty() && banco.host.file[file].starts_with("Utente : T01\r\n"), "libero e non preso");
    static_cast<void>(SbloccaArea("10.0.0.1", "CREDITI"));
    Esigi(!banco.host.file.contains(file), "un blocco che resta");
    return;
  }
  Esigi(banco.host.file[file] == contenuto, "cambiato il blocco di un altro");
  // A box shows the beginning of a text that would not fit on a screen, and other characters for those that are none.
  const std::string inizio = chi.substr(0, 100);
  const std::string detto =
      "Area CREDITI in manutenzione presso un altro terminale\r" + (TestoPulito(inizio) ? inizio : "");
  Esigi(banco.desktop.box.size() == 1 && banco.desktop.box[0].starts_with(detto), "preso e non detto");
}

} // namespace lumoscad::fuzz
