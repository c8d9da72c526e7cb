// A terminal without a screen: runs the commands of its standard input in its own process, with the real host link and
// the real database, and logs what became of each.
//
//   terminale LOG [STEPS [DEATH]]
//
// The first input line holds the database options of every command, the others a command and the script of its screens,
// separated by a tab; "#pausa N" waits for N milliseconds, "#numero N" gives the next command this number. STEPS is the
// file for the names of the steps, DEATH the number of the step at which to die.

#include "Campi.hpp"
#include "Copione.hpp"
#include "HostOsservato.hpp"
#include "Iniettore.hpp"
#include "Passi.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "platform/Services.hpp"
#include "platform/nexaro/Nexaro.hpp"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <iostream>
#include <string>
#include <thread>
#include <unistd.h>

namespace lumoscad::test {
namespace {

/// Every record is one write, so that a killed terminal's log holds all that it said.
class Registro {
 public:
  explicit Registro(const char* percorso)
      : descrittore_(::open(percorso, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, S_IRUSR | S_IWUSR)) {
    if (descrittore_ < 0) {
      throw std::runtime_error("the log cannot be written");
    }
  }
  Registro(const Registro&) = delete;
  Registro& operator=(const Registro&) = delete;
  ~Registro() { ::close(descrittore_); }

  void Scrivi(const std::vector<std::string>& campi) const {
    const SenzaIniezioni mai;
    const std::string riga = Unisci(campi) + "\n";
    if (::write(descrittore_, riga.data(), riga.size()) != static_cast<ssize_t>(riga.size())) {
      throw std::runtime_error("the log cannot be written");
    }
  }

 private:
  int descrittore_;
};

class Terminale {
 public:
  Terminale(const char* registro, nexaro::Environment ambiente)
      : registro_(registro), ambiente_(std::move(ambiente)),
        host_(nexaro::CreateHostLink(), [this](const std::vector<std::string>& campi) { Annota(campi); }) {
    ActiveServices() = {[this]() -> Desktop& { return desktop_; }, [this]() -> nexaro::HostLink& { return host_; },
                        [this]() -> const nexaro::Environment& { return ambiente_; }, SystemTime,
                        passi::ProssimaIstruzione};
  }

  /// What is no command; false for one that is.
  bool Segui(const std::string& riga) {
    if (riga.starts_with("#pausa ")) {
      std::this_thread::sleep_for(std::chrono::milliseconds(std::stol(riga.substr(riga.find(' ')))));
    } else if (riga.starts_with("#numero ")) {
      numero_ = std::stoi(riga.substr(riga.find(' '))) - 1;
    }
    return riga.starts_with("#");
  }

  void Esegui(const std::string& comando, const std::string& gesti, const std::string& opzioni) {
    ++numero_;
    // The database's log of changes names the command by this.
    const std::string nome = ambiente_.CodicePostazione + "." + std::to_string(numero_);
    ::setenv("PGOPTIONS", ("-c lumoscad.comando=" + nome).c_str(), 1);
    desktop_.gesti = gesti;
    desktop_.box.clear();
    preso_.clear();
    host_.Comincia();
    registro_.Scrivi({"INIZIO", nome, Ora(), comando, gesti});
    const std::string riga = comando + " " + opzioni;
    // Of several commands the first is the one in which something is made to fail.
    if (numero_ == 1) {
      Avvisa(FaseIniezione::Comando);
    }
    const std::string risultato = LumoScadenze().EseguiLumoScad(riga);
    Avvisa(FaseIniezione::Fine);
    std::vector<std::string> fine{"FINE", nome, Ora(), risultato};
    fine.insert(fine.end(), desktop_.box.begin(), desktop_.box.end());
    registro_.Scrivi(fine);
    TogliBlocco();
  }

 private:
  void Annota(const std::vector<std::string>& campi) {
    registro_.Scrivi(campi);
    const SenzaIniezioni mai;
    if (campi[0] == "RISPOSTA" && campi[1] == "ACCETTATA") {
      Avvisa(FaseIniezione::Accetta);
    }
    if (campi[0] == "BLOCCATO" && campi[4] == "riuscito") {
      preso_ = campi[1];
    } else if (campi[0] == "SBLOCCATO") {
      preso_.clear();
    }
  }

  /// The administrator's part after a command that failed with the lock in its hand.
  void TogliBlocco() {
    if (preso_.empty() || std::getenv("LUMOSCAD_SENZA_AMMINISTRATORE") != nullptr) {
      return;
    }
    const std::string inizio = Ora();
    std::filesystem::remove(std::filesystem::path(std::getenv("NEXARO_RADICE")) / "tmp" / preso_);
    registro_.Scrivi({"AMMINISTRATORE", preso_, inizio, Ora(), "riuscito"});
  }

  Registro registro_;
  nexaro::Environment ambiente_;
  DesktopACopione desktop_;
  HostOsservato host_;
  std::string preso_; ///< the lock that the running command holds
  int numero_ = 0;
};

int Gioca(int numero, char** argomenti) {
  if (numero < 2) {
    std::fputs("usage: terminale LOG [STEPS [DEATH]]\n", stderr);
    return 2;
  }
  Terminale terminale(argomenti[1], nexaro::ReadEnvironment());
  std::string opzioni;
  std::getline(std::cin, opzioni);
  if (numero > 2) {
    passi::Conta(argomenti[2], numero > 3 ? std::stol(argomenti[3]) : 0, nexaro::ReadEnvironment().CartellaLocale);
  }
  for (std::string riga; std::getline(std::cin, riga);) {
    if (terminale.Segui(riga)) {
      continue;
    }
    const auto tab = riga.find('\t');
    terminale.Esegui(riga.substr(0, tab), tab == std::string::npos ? "" : riga.substr(tab + 1), opzioni);
  }
  return 0;
}

} // namespace
} // namespace lumoscad::test

int main(int numero, char** argomenti) {
  try {
    return lumoscad::test::Gioca(numero, argomenti);
  } catch (const std::exception& errore) {
    std::fprintf(stderr, "terminale: %s\n", errore.what());
    return 1;
  }
}
