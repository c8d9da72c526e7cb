// A connection that is kept for days keeps neither memory nor open files, on neither side, and leaves nothing on the
// host.

#include "Dimostrazione.hpp"
#include "Figlio.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "support/SshServer.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <string>
#include <unistd.h>
#include <utility>

namespace lumoscad::test {
namespace {

namespace fs = std::filesystem;

#ifdef LUMOSCAD_SANITIZZATO
constexpr int Cicli = 100;
#else
constexpr int Cicli = 1000;
#endif
constexpr int Avvio = Cicli / 10;

long FileAperti(const std::string& processo) {
  std::error_code ignorato;
  const fs::directory_iterator voci(fs::path("/proc") / processo / "fd", ignorato);
  return static_cast<long>(std::distance(begin(voci), end(voci)));
}

struct Risorse {
  long memoria = 0;         ///< resident, in KiB
  long file = 0;            ///< open descriptors
  long fileServer = 0;      ///< the same of the server, its session and its subsystem
  std::size_t processi = 0; ///< of the server
};

Risorse Misura(const SshServer& server) {
  Risorse risorse;
  long totale = 0;
  std::ifstream("/proc/self/statm") >> totale >> risorse.memoria;
  risorse.memoria *= ::sysconf(_SC_PAGESIZE) / 1024;
  risorse.file = FileAperti("self");
  const auto processi = server.Processes();
  for (const auto processo : processi) {
    risorse.fileServer += FileAperti(std::to_string(processo));
  }
  risorse.processi = processi.size();
  return risorse;
}

/// The resources once the server has put away what served the last request.
Risorse MisuraFerma(const SshServer& server) {
  Risorse prima = Misura(server);
  Risorse dopo;
  EXPECT_TRUE(Finche([&] {
    std::swap(prima, dopo);
    prima = Misura(server);
    return prima.fileServer == dopo.fileServer && prima.processi == dopo.processi;
  }));
  return prima;
}

/// One request as a command makes it: upload, rename, call, clean-up.
void Richiedi(nexaro::HostLink& host, const std::string& locale, const std::string& remoto) {
  const auto indirizzo = SshServer::Address();
  host.InviaFile(indirizzo, locale, remoto);
  std::string testo;
  host.RinominaFile(indirizzo, remoto, remoto + ".dos", testo);
  std::string risposta;
  nexaro::XMLParser parser;
  parser.Parse = [&risposta](const xml::Nodo& nodo) { risposta = nodo.value; };
  host.EseguiProgramma(indirizzo, "VB0001",
                       {"01", "CANALIZZAZIONE", "CREDITI", "T01", remoto + ".dos", "", "", "", "", "", ""}, parser);
  ASSERT_EQ(risposta, "Variata 1 scadenza");
  host.CancellaFile(indirizzo, remoto);
  host.CancellaFile(indirizzo, remoto + ".dos");
}

TEST(SshLeaks, AThousandRequestsOverOneConnectionLeaveNothingBehind) {
  [[maybe_unused]] static constexpr long CrescitaMassima = 1024; // KiB; a leak of 1.2 KiB a request would be more
  const Dimostrazione demo(Trasporto::Ssh);
  for (const auto& voce : demo.Ambiente()) {
    const auto segno = voce.find('=');
    ::setenv(voce.substr(0, segno).c_str(), voce.substr(segno + 1).c_str(), 1);
  }
  const auto locale = (demo.Locale() / "richiesta").string();
  Scrivi(locale, "20100023,2025/46,,,,20251219,20251219,20260415,60100002,,2\r\n");
  const auto host = nexaro::CreateHostLink();
  Risorse prima;
  for (int ciclo = 0; ciclo < Cicli; ++ciclo) {
    ASSERT_NO_FATAL_FAILURE(Richiedi(*host, locale, "/tmp/T0120260305" + std::to_string(100000 + ciclo))) << ciclo;
    if (ciclo + 1 == Avvio) {
      prima = MisuraFerma(demo.Ssh());
    }
  }
  const auto dopo = MisuraFerma(demo.Ssh());
  std::printf("memoria residente: %ld KiB dopo %d richieste, %ld KiB dopo %d\n", prima.memoria, Avvio, dopo.memoria,
              Cicli);
  std::printf("file aperti: %ld e %ld, del server: %ld e %ld\n", prima.file, dopo.file, prima.fileServer,
              dopo.fileServer);
#ifndef LUMOSCAD_SANITIZZATO
  EXPECT_LE(dopo.memoria - prima.memoria, CrescitaMassima);
#endif
  EXPECT_EQ(dopo.file, prima.file);
  // A channel that stays open keeps its three pipes in the session, and the server allows ten channels.
  EXPECT_EQ(dopo.fileServer, prima.fileServer);
  EXPECT_EQ(dopo.processi, prima.processi);
  EXPECT_THAT(Contenuto(demo.Tmp()), testing::IsEmpty());
  EXPECT_THAT(Contenuto(demo.Locale()), testing::ElementsAre("richiesta"));
  const auto registro = FileText(demo.Registro());
  EXPECT_EQ(std::count(registro.begin(), registro.end(), '\n'), Cicli) << "every request ran once";
  const auto accessi = FileText(demo.Ssh().Log());
  EXPECT_EQ(accessi.find("Accepted publickey"), accessi.rfind("Accepted publickey")) << "one connection";
  EXPECT_NE(accessi.find("Accepted publickey"), std::string::npos);
}

} // namespace
} // namespace lumoscad::test
