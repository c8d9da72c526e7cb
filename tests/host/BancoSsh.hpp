#pragma once

#include "Banco.hpp"
#include "platform/nexaro/ssh/SshLink.hpp"
#include "support/Files.hpp"
#include "support/Paths.hpp"
#include "support/SshServer.hpp"

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumoscad::test {

/// One server that the cases of the program share, and a component that is set to it.
class BancoSsh : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    ASSERT_TRUE(test::SshServer::Available());
    server = std::make_unique<test::SshServer>(
        test::OutputPath("host/prove-" + fs::read_symlink("/proc/self/exe").filename().string()));
  }
  static void TearDownTestSuite() { server.reset(); }

  void SetUp() override {
    for (const auto* nome : {"host", "programmi", "locale"}) {
      fs::create_directories(base / nome);
    }
    fs::permissions(base / "locale", fs::perms::owner_all);
    impostazioni = Impostazioni();
    Collega();
  }

  [[nodiscard]] nexaro::SshSettings Impostazioni() const {
    nexaro::SshSettings valori;
    valori.port = static_cast<unsigned>(server->Port());
    valori.user = server->User();
    valori.key = server->Key();
    valori.knownHosts = server->KnownHosts();
    valori.programs = base / "programmi";
    valori.timeout = std::chrono::seconds(20);
    return valori;
  }

  /// A new component with the present settings.
  void Collega() { collegamento.emplace(impostazioni); }

  void Programma(const std::string& corpo) const { ScriviProgramma(base / "programmi/VB0001", corpo); }

  std::optional<xml::Nodo> Risposta(const std::vector<std::string>& parametri = {}) {
    std::optional<xml::Nodo> ricevuto;
    nexaro::XMLParser lettore;
    lettore.Parse = [&](const xml::Nodo& nodo) { ricevuto = nodo; };
    collegamento->EseguiProgramma(Host, "VB0001", parametri, lettore);
    return ricevuto;
  }
  std::string Rifiuto() {
    return ErroreDi([this] { static_cast<void>(Risposta()); }).Description();
  }
  void Invia(const std::string& nome, const std::string& contenuto) {
    Scrivi(base / ("locale/" + nome), contenuto);
    collegamento->InviaFile(Host, base / ("locale/" + nome), base / ("host/" + nome));
  }
  [[nodiscard]] std::vector<std::string> NomiIn(const std::string& nome) const {
    std::vector<std::string> nomi;
    for (const auto& voce : fs::directory_iterator(base / nome)) {
      nomi.push_back(voce.path().filename().string());
    }
    std::sort(nomi.begin(), nomi.end());
    return nomi;
  }

  static constexpr const char* Host = "127.0.0.1";
  static inline std::unique_ptr<test::SshServer> server; // NOLINT: shared by the cases
  TemporaryFolder base;
  nexaro::SshSettings impostazioni;
  std::optional<nexaro::SshLink> collegamento;
  std::string testo;
};

} // namespace lumoscad::test
