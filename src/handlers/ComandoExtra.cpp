#include "common/Messaggi.hpp"
#include "common/Stato.hpp"
#include "handlers/ModuloMain.hpp"
#include "handlers/Opzioni.hpp"
#include "handlers/RichiestaAttesa.hpp"

#include <vector>

namespace lumoscad::ModuloMain {

std::string ComandoExtra(std::string_view comando) {
  Stato& s = stato();
  bool dimostrazione = false;
  LeggiOpzioni(comando, {{"-T", &s.tipoComando},
                         {"-D", &s.azienda},
                         {"-H", &s.HostIP},
                         {"-S", &s.Serie},
                         {"-E", &s.Esercizio},
                         {"-N", &s.Numero},
                         {"-DEMO", &dimostrazione}});
  if (dimostrazione) {
    MostraMessaggio("Il movimento è stato annullato", "");
    return "";
  }
  return CancellaExtra(s.azienda, s.HostIP, s.Serie, s.Esercizio, s.Numero);
}

std::string CancellaExtra(std::string_view azienda, std::string_view hostIP, std::string_view serie,
                          std::string_view esercizio, std::string_view numero) {
  const std::vector<std::string> parametri = {std::string(azienda),   "EXTRADEL",          std::string(serie),
                                              std::string(esercizio), std::string(numero), ""};
  return RichiestaAttesa(hostIP, parametri, parametri);
}

} // namespace lumoscad::ModuloMain
