#pragma once

#include "platform/RuntimeError.hpp"
#include "support/Files.hpp"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace lumoscad::test {

namespace fs = std::filesystem;

/// What a person is told of a program that may have done its work.
inline const std::string Ignoto = "L'esito sull'host non è noto: verificarlo prima di ripetere il comando.";

/// Environment variables that return to what they were.
class VariabiliProvvisorie {
 public:
  VariabiliProvvisorie() = default;
  VariabiliProvvisorie(const VariabiliProvvisorie&) = delete;
  VariabiliProvvisorie& operator=(const VariabiliProvvisorie&) = delete;
  ~VariabiliProvvisorie() {
    for (auto voce = precedenti_.rbegin(); voce != precedenti_.rend(); ++voce) {
      if (voce->second.first) {
        ::setenv(voce->first.c_str(), voce->second.second.c_str(), 1);
      } else {
        ::unsetenv(voce->first.c_str());
      }
    }
  }

  void Imposta(const std::string& nome, const std::string& valore) {
    Ricorda(nome);
    ::setenv(nome.c_str(), valore.c_str(), 1);
  }
  void Togli(const std::string& nome) {
    Ricorda(nome);
    ::unsetenv(nome.c_str());
  }

 private:
  void Ricorda(const std::string& nome) {
    const char* valore = std::getenv(nome.c_str());
    precedenti_.emplace_back(nome, std::make_pair(valore != nullptr, std::string(valore != nullptr ? valore : "")));
  }

  std::vector<std::pair<std::string, std::pair<bool, std::string>>> precedenti_;
};

inline void Scrivi(const std::string& percorso, const std::string& contenuto) {
  std::ofstream(percorso, std::ios::binary) << contenuto;
}

/// Writes a shell script that can be run as a program.
inline std::string ScriviProgramma(const std::string& percorso, const std::string& corpo) {
  Scrivi(percorso, "#!/bin/sh\n" + corpo + "\n");
  fs::permissions(percorso, fs::perms::owner_all);
  return percorso;
}

/// The run-time error that `azione` raises; a failure of the test where it raises none.
template <typename Azione> RuntimeError ErroreDi(Azione azione) {
  try {
    azione();
  } catch (const RuntimeError& errore) {
    return errore;
  }
  ADD_FAILURE() << "nessun errore";
  return {0, ""};
}

} // namespace lumoscad::test
