#pragma once

#include "Banco.hpp"
#include "platform/nexaro/cartella/Process.hpp"
#include "platform/xml/Nodo.hpp"
#include "support/Files.hpp"
#include "support/Paths.hpp"

namespace lumoscad::test {

/// The back end of the demonstration, run as the host runs it in a directory of its own.
class BackEndVB0001 : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(radice / "tmp");
    std::filesystem::create_directories(radice / "registro");
  }

  static std::vector<std::string> Parametri() {
    return {"01", "CANALIZZAZIONE", "CREDITI", "T01", "/tmp/T01.dos", "", "", "", "", "", ""};
  }
  static std::vector<std::string> Con(std::vector<std::string> parametri, std::size_t indice,
                                      const std::string& valore) {
    parametri.at(indice) = valore;
    return parametri;
  }

  /// The answer's bytes.
  std::string Byte(const std::vector<std::string>& parametri) {
    const auto esito = nexaro::Run({test::ProgramPath("VB0001").string(),
                                    parametri,
                                    {"NEXARO_RADICE=" + radice.Path().string()},
                                    radice.Path().string(),
                                    std::chrono::seconds(20),
                                    100000,
                                    2000});
    EXPECT_EQ(esito.finish, nexaro::ProcessEnd::Exited);
    EXPECT_EQ(esito.state, 0) << esito.errors;
    return esito.output;
  }
  xml::Nodo Chiama(const std::vector<std::string>& parametri) { return xml::Read(Byte(parametri)); }

  /// The one text of the answer, which must be an `elemento`, to a request whose file holds `contenuto`.
  std::string Testo(const std::string& elemento, const std::string& contenuto,
                    const std::vector<std::string>& parametri = Parametri()) {
    Scrivi(radice / "tmp/T01.dos", contenuto);
    const auto risposta = Chiama(parametri);
    EXPECT_EQ(risposta.name, "RISPOSTA");
    EXPECT_EQ(risposta.children.size(), 1U);
    EXPECT_EQ(risposta.children.at(0).name, elemento) << risposta.value;
    return risposta.children.at(0).value;
  }
  std::string Errore(const std::string& contenuto) { return Testo("ERRORE", contenuto); }

  TemporaryFolder radice;
};

} // namespace lumoscad::test
