// Every command and every screen on the demonstration, compared with what was recorded of them: statements and their
// values, files, parameters, windows, boxes, results, rows. A difference that is wanted is recorded anew by
// scripts/record.sh and committed with the change that makes it.

#include "Pagine.hpp"
#include "Scena.hpp"
#include "support/Paths.hpp"

#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <sstream>
#include <string>
#include <tuple>

namespace lumoscad::test {
namespace {

namespace fs = std::filesystem;

/// What diff(1) tells of two files.
std::string Confronta(const fs::path& atteso, const fs::path& avuto) {
  const auto comando = "diff -u '" + atteso.string() + "' '" + avuto.string() + "'";
  std::string testo;
  FILE* uscita = ::popen(comando.c_str(), "r");
  if (uscita == nullptr) {
    return "diff(1) cannot be run";
  }
  for (int carattere = std::fgetc(uscita); carattere != EOF; carattere = std::fgetc(uscita)) {
    testo += static_cast<char>(carattere);
  }
  ::pclose(uscita);
  return testo;
}

class Recorder : public testing::TestWithParam<std::tuple<const char*, Pagina>> {
 protected:
  [[nodiscard]] static std::string Recitata() {
    const auto& [genere, pagina] = GetParam();
    const Dimostrazione demo(pagina.trasporto);
    Registro registro;
    std::string testo;
    for (const auto& recita : pagina.recite()) {
      {
        Scena scena(genere, registro, demo);
        recita.azione(scena);
      }
      testo += registro.Chiudi(recita.titolo);
    }
    return testo;
  }
};

TEST_P(Recorder, EveryPlayIsAsItWasRecorded) {
  const auto& [genere, pagina] = GetParam();
  const auto testo = Recitata();
  const fs::path atteso = test::SourcePath("tests/registratore/attesi") / genere / (std::string(pagina.nome) + ".txt");
  if (std::getenv("LUMOSCAD_REGISTRA") != nullptr) {
    fs::create_directories(atteso.parent_path());
    Scrivi(atteso, testo);
    return;
  }
  const fs::path avuto = test::OutputPath("registratore/avuti") / genere / (std::string(pagina.nome) + ".txt");
  fs::create_directories(avuto.parent_path());
  Scrivi(avuto, testo);
  EXPECT_TRUE(fs::exists(atteso)) << atteso;
  EXPECT_TRUE(FileText(atteso) == testo) << Confronta(atteso, avuto);
}

const auto NomeDellaPagina = [](const auto& caso) {
  return std::string(std::get<0>(caso.param)) + "_" + std::get<1>(caso.param).nome;
};

INSTANTIATE_TEST_SUITE_P(Pages, Recorder,
                         testing::Combine(testing::Values("sqlite", "postgres"), testing::ValuesIn(Pagine())),
                         NomeDellaPagina);
INSTANTIATE_TEST_SUITE_P(SshPages, Recorder,
                         testing::Combine(testing::Values("sqlite"),
                                          testing::Values(Pagina{"ssh", ReciteSsh, Trasporto::Ssh})),
                         NomeDellaPagina);

} // namespace
} // namespace lumoscad::test
