// The server of the tests lets in whom it should, as the system's own client sees it.

#include "support/Loopback.hpp"
#include "support/Paths.hpp"
#include "support/ServerSsh.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace lumoscad::prova {
namespace {

namespace fs = std::filesystem;

struct Esito {
  std::string uscita;
  int stato = -1;
};

class TestServer : public testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_TRUE(ServerSsh::Disponibile()); }

  [[nodiscard]] Esito Ssh(const std::string& comando, const fs::path& chiave) const {
    return Esegui("ssh -p " + std::to_string(server.Porta()) + Sicurezza(chiave) + Posto() + " '" + comando +
                  "' </dev/null");
  }
  [[nodiscard]] Esito Sftp(const std::string& comandi) const {
    return Esegui("printf '" + comandi + "' | sftp -q -b - -P " + std::to_string(server.Porta()) +
                  Sicurezza(server.Chiave()) + Posto());
  }
  [[nodiscard]] std::string Posto() const { return " " + server.Utente() + "@" + ServerSsh::Indirizzo(); }
  [[nodiscard]] std::string Sicurezza(const fs::path& chiave) const {
    return " -F none -o BatchMode=yes -o IdentitiesOnly=yes -o IdentityAgent=none -o GlobalKnownHostsFile=none"
           " -o StrictHostKeyChecking=yes -o UserKnownHostsFile='" +
           server.Noti().string() + "' -i '" + chiave.string() + "'";
  }
  static Esito Esegui(const std::string& riga) {
    std::FILE* tubo = ::popen((riga + " 2>/dev/null").c_str(), "r");
    Esito esito;
    std::array<char, 256> pezzo{};
    while (const auto letti = std::fread(pezzo.data(), 1, pezzo.size(), tubo)) {
      esito.uscita.append(pezzo.data(), letti);
    }
    esito.stato = ::pclose(tubo);
    return esito;
  }

  /// The cases may run side by side.
  static fs::path Cartella() {
    auto nome = std::string(testing::UnitTest::GetInstance()->current_test_info()->name());
    std::replace(nome.begin(), nome.end(), '/', '_');
    return test::outputPath("support/prove") / nome;
  }

  ServerSsh server{Cartella(), {"ed25519", {"A=uno due", "B=tre"}, "internal-sftp", {}}};
};

TEST_F(TestServer, RunsAProgramInItsEnvironmentForTheAcceptedKeyOnly) {
  EXPECT_EQ(Ssh("echo $A, $B", server.Chiave()).uscita, "uno due, tre\n");
  const auto estraneo = Ssh("echo dentro", server.ChiaveEstranea());
  EXPECT_NE(estraneo.stato, 0);
  EXPECT_EQ(estraneo.uscita, "");
}

TEST_F(TestServer, ShowsAnotherKeyAfterAChange) {
  const auto prima = server.Impronta();
  EXPECT_TRUE(prima.starts_with("SHA256:"));
  server.CambiaChiaveHost("ecdsa");
  EXPECT_NE(server.Impronta(), prima);
  EXPECT_NE(Ssh("true", server.Chiave()).stato, 0);
  server.RendiNoto(server.Porta());
  EXPECT_EQ(Ssh("echo dentro", server.Chiave()).uscita, "dentro\n");
}

TEST_F(TestServer, StopsAndStartsOnTheSamePort) {
  server.Ferma();
  EXPECT_FALSE(Collega(server.Porta()).Opened());
  server.Riavvia();
  EXPECT_EQ(Ssh("echo dentro", server.Chiave()).uscita, "dentro\n");
}

class ServerRoot : public TestServer {
 protected:
  ServerRoot() {
    fs::create_directories(radice / "tmp");
    std::ofstream(locale) << std::string(200000, 'x');
    Configura("");
  }
  void Configura(const std::string& opzioni) {
    server.Cambia({"ed25519",
                   {},
                   "'" + test::programPath("sftp_radice").string() + "' " + opzioni + " '" + radice.string() + "'",
                   {}});
  }

  fs::path radice = server.Cartella() / "radice";
  fs::path locale = server.Cartella() / "locale";
  std::string put = "put " + locale.string() + " /tmp/nome";
};

TEST_F(ServerRoot, IsTheRootOfTheHost) {
  EXPECT_EQ(Sftp(put + "\nrename /tmp/nome /tmp/altro\nput " + locale.string() + " /tmp/terzo\nrm /tmp/terzo").stato,
            0);
  EXPECT_EQ(fs::file_size(radice / "tmp/altro"), 200000U);
  EXPECT_FALSE(fs::exists(radice / "tmp/nome") || fs::exists(radice / "tmp/terzo"));
}

TEST_F(ServerRoot, IsFullWhereItIsTold) {
  Configura("-f 100000");
  EXPECT_NE(Sftp(put).stato, 0);
  EXPECT_EQ(fs::file_size(radice / "tmp/nome"), 100000U);
}

class StalledServerRoot : public ServerRoot, public testing::WithParamInterface<const char*> {};

TEST_P(StalledServerRoot, StandsStillBeforeOrAfterARequest) {
  std::ofstream(radice / "tmp/nome") << "a";
  std::ofstream(server.Cartella() / "ordine") << "rinomina " << GetParam();
  Configura("-o '" + server.Cartella().string() + "'");
  std::thread cliente([this] { EXPECT_NE(Sftp("rename /tmp/nome /tmp/altro").stato, 0); });
  while (!fs::exists(server.Cartella() / "fermo")) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  server.TroncaSessioni();
  cliente.join();
  EXPECT_EQ(fs::exists(radice / "tmp/altro"), GetParam() == std::string("dopo"));
}

INSTANTIATE_TEST_SUITE_P(Moments, StalledServerRoot, testing::Values("prima", "dopo"));

} // namespace
} // namespace lumoscad::prova
