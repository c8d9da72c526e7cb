#include "Bersagli.hpp"
#include "support/Files.hpp"
#include "support/Paths.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

using namespace lumoscad::fuzz;

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> File(const fs::path& cartella) {
  std::vector<fs::path> file;
  if (fs::exists(cartella)) {
    for (const auto& voce : fs::directory_iterator(cartella)) {
      file.push_back(voce.path());
    }
  }
  std::sort(file.begin(), file.end());
  return file;
}

class KeptInputs : public testing::TestWithParam<Bersaglio> {
 protected:
  /// Plays every input of a folder and returns how many there are.
  static std::size_t Gioca(std::string_view raccolta) {
    const auto file = File(lumoscad::test::SourcePath("tests/fuzz") / raccolta / GetParam().nome);
    for (const fs::path& percorso : file) {
      SCOPED_TRACE(percorso.filename().string());
      const std::string byte = lumoscad::test::FileText(percorso);
      const std::vector<std::uint8_t> ingresso(byte.begin(), byte.end());
      EXPECT_NO_THROW(GetParam().prova(ingresso));
    }
    return file.size();
  }
};

} // namespace

TEST_P(KeptInputs, BehaveAsTheyMust) {
  EXPECT_GT(Gioca("corpora"), 10U) << "mancano gli ingressi conservati";
}

TEST_P(KeptInputs, ThatOnceFoundAFaultFindItNoMore) {
  Gioca("reperti");
}

TEST(Findings, AllStandUnderATargetThatPlaysThemAgain) {
  std::size_t rigiocati = 0;
  for (const Bersaglio& bersaglio : Bersagli) {
    rigiocati += File(lumoscad::test::SourcePath("tests/fuzz/reperti") / bersaglio.nome).size();
  }
  const fs::recursive_directory_iterator tutti(lumoscad::test::SourcePath("tests/fuzz/reperti"));
  const auto conservati =
      std::count_if(begin(tutti), end(tutti), [](const auto& voce) { return voce.is_regular_file(); });
  EXPECT_GT(rigiocati, 0U);
  EXPECT_EQ(rigiocati, static_cast<std::size_t>(conservati));
}

INSTANTIATE_TEST_SUITE_P(Targets, KeptInputs, testing::ValuesIn(Bersagli),
                         [](const auto& caso) { return std::string(caso.param.nome); });
