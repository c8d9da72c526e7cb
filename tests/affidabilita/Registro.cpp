#include "Registro.hpp"

#include "Campi.hpp"
#include "Sistema.hpp"

#include <chrono>
#include <stdexcept>

namespace lumoscad::test {
namespace {

void Aggiungi(Eseguito& comando, const Testi& campi) {
  const std::string& genere = campi[0];
  if (genere == "RICHIESTA") {
    comando.contenuto = campi.at(1);
    comando.richiesta.assign(campi.begin() + 2, campi.end());
  } else if (genere == "RISPOSTA") {
    comando.accettata = campi.at(1) == "ACCETTATA";
    comando.risposto = std::stoll(campi.at(2));
  } else if (genere == "FINE") {
    comando.fine = std::stoll(campi.at(2));
    comando.risultato = campi.at(3);
    comando.box.assign(campi.begin() + 4, campi.end());
  } else if (genere == "MORTE") {
    // A second one is of a terminal that had not begun another command.
    if (comando.fine == 0) {
      comando.morto = true;
      comando.fine = std::stoll(campi.at(1));
    }
  } else {
    comando.operazioni.push_back(
        {genere, campi.at(1), std::stoll(campi.at(2)), std::stoll(campi.at(3)), campi.at(4) == "riuscito"});
  }
}

} // namespace

Istante Adesso() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

std::vector<Eseguito> LeggiRegistro(const std::filesystem::path& file) {
  std::vector<Eseguito> comandi;
  for (const std::string& riga : LeggiRighe(file)) {
    const Testi campi = Separa(riga);
    if (campi[0] != "INIZIO") {
      Aggiungi(comandi.at(comandi.size() - 1), campi);
      continue;
    }
    Eseguito nuovo;
    nuovo.nome = campi.at(1);
    nuovo.inizio = std::stoll(campi.at(2));
    nuovo.risposto = nuovo.inizio;
    nuovo.comando = campi.at(3);
    comandi.push_back(std::move(nuovo));
  }
  for (const Eseguito& comando : comandi) {
    if (comando.fine == 0) {
      throw std::runtime_error("the command " + comando.nome + " has no end");
    }
  }
  return comandi;
}

} // namespace lumoscad::test
