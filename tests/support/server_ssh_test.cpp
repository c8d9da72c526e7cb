// The server of the tests lets in whom it should, as the system's own client sees it.

#include "support/Loopback.hpp"
#include "support/ServerSsh.hpp"

#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>

namespace lumoscad::prova {
namespace {

struct Esito {
  std::string uscita;
  int stato = -1;
};

class Server : public testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_TRUE(ServerSsh::Disponibile()); }

  [[nodiscard]] Esito Ssh(const std::string& comando, const std::filesystem::path& chiave) const {
    const std::string riga = "ssh -F none -o BatchMode=yes -o IdentitiesOnly=yes -o IdentityAgent=none "
                             "-o GlobalKnownHostsFile=none -o StrictHostKeyChecking=yes -o UserKnownHostsFile='" +
                             server.Noti().string() + "' -i '" + chiave.string() + "' -p " +
                             std::to_string(server.Porta()) + " " + server.Utente() + "@" + ServerSsh::Indirizzo() +
                             " '" + comando + "' </dev/null 2>/dev/null";
    std::FILE* tubo = ::popen(riga.c_str(), "r");
    Esito esito;
    std::array<char, 256> pezzo{};
    while (const auto letti = std::fread(pezzo.data(), 1, pezzo.size(), tubo)) {
      esito.uscita.append(pezzo.data(), letti);
    }
    esito.stato = ::pclose(tubo);
    return esito;
  }

  /// The cases may run side by side.
  static std::filesystem::path Cartella() {
    return std::filesystem::path(LUMOSCAD_CARTELLA_PROVE) /
           testing::UnitTest::GetInstance()->current_test_info()->name();
  }

  ServerSsh server{Cartella(), {"ed25519", {"A=uno due", "B=tre"}, "internal-sftp", {}}};
};

TEST_F(Server, RunsAProgramInItsEnvironmentForTheAcceptedKeyOnly) {
  EXPECT_EQ(Ssh("echo $A, $B", server.Chiave()).uscita, "uno due, tre\n");
  const auto estraneo = Ssh("echo dentro", server.ChiaveEstranea());
  EXPECT_NE(estraneo.stato, 0);
  EXPECT_EQ(estraneo.uscita, "");
}

TEST_F(Server, ShowsAnotherKeyAfterAChange) {
  const auto prima = server.Impronta();
  EXPECT_TRUE(prima.starts_with("SHA256:"));
  server.CambiaChiaveHost("ecdsa");
  EXPECT_NE(server.Impronta(), prima);
  EXPECT_NE(Ssh("true", server.Chiave()).stato, 0);
  server.RendiNoto(server.Porta());
  EXPECT_EQ(Ssh("echo dentro", server.Chiave()).uscita, "dentro\n");
}

TEST_F(Server, StopsAndStartsOnTheSamePort) {
  server.Ferma();
  EXPECT_FALSE(Collega(server.Porta()).Aperto());
  server.Riavvia();
  EXPECT_EQ(Ssh("echo dentro", server.Chiave()).uscita, "dentro\n");
}

} // namespace
} // namespace lumoscad::prova
