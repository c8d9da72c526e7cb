#include "handlers/ComandoModifica.hpp"

#include "common/Messaggi.hpp"

#include <algorithm>

namespace lumoscad::ModuloMain {
namespace {

constexpr std::size_t RigheMostrate = 20;

} // namespace

void MostraRigheRimaste(const std::vector<std::string>& righe) {
  if (righe.empty()) {
    return;
  }
  // Two records of one document, or of one instalment, read the same.
  std::vector<std::string> diverse;
  for (const std::string& riga : righe) {
    if (std::find(diverse.begin(), diverse.end(), riga) == diverse.end()) {
      diverse.push_back(riga);
    }
  }
  MostraMessaggio("L'host ha registrato la modifica; nella base dati queste righe erano già cambiate e sono rimaste "
                  "com'erano: " +
                      Elenca(diverse.size(), RigheMostrate, [&](std::size_t i) { return diverse[i]; }),
                  "");
}

} // namespace lumoscad::ModuloMain
