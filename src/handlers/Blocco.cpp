#include "handlers/Blocco.hpp"

#include "common/Messaggi.hpp"
#include "common/Testo.hpp"
#include "platform/Services.hpp"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace lumoscad {
namespace {

/// Runs one step; what fails is skipped, and the next step goes on.
template <typename Passo> void Prosegui(Passo passo) noexcept {
  try {
    passo();
  } catch (...) { // NOLINT(bugprone-empty-catch): the lock is advisory, no failure of it stops the command
  }
}

std::string ChiaveBlocco(std::string_view tipo) {
  return "VB" + TogliSpazi(tipo);
}

std::string RigaUtente() {
  return "Utente : " + ActiveServices().environment().CodicePostazione;
}

std::string RigaOra() {
  const DateTime t = ActiveServices().localTime();
  return "Data : " + ConZeri(t.day, 2) + "/" + ConZeri(t.month, 2) + "/" + ConZeri(t.year, 4) +
         "   Ora : " + ConZeri(t.hour, 2) + ":" + ConZeri(t.minute, 2);
}

} // namespace

std::string FileDelBlocco(std::string_view tipo) {
  return "/tmp/" + ChiaveBlocco(tipo);
}

std::vector<std::string> RigheDiChiBlocca() {
  return {RigaUtente(), RigaOra()};
}

std::vector<std::string> RigheDelBlocco(LocalBeginning inizio) {
  auto& righe = inizio.lines;
  if (inizio.continues) {
    righe.erase(righe.begin(), std::find_if(righe.begin(), righe.end(), MaggioreDiSpazio));
    if (righe.empty()) {
      righe.emplace_back("un blocco di oltre 64 KiB");
    }
  }
  righe.resize(2);
  return std::move(righe);
}

std::string TestoDelBlocco(const std::vector<std::string>& righe) {
  std::string testo;
  for (const std::string& riga : righe) {
    testo.append(riga).append("\r\n");
  }
  return testo;
}

std::string TogliSpazi(std::string_view testo) {
  std::string senza;
  std::copy_if(testo.begin(), testo.end(), std::back_inserter(senza), [](char c) { return c != ' '; });
  return senza;
}

std::string BloccaArea(std::string_view hostIP, std::string_view tipo) {
  const std::string remoto = FileDelBlocco(tipo);
  std::string locale;
  std::string riga1;
  std::string riga2;
  Prosegui([&] { locale = ActiveServices().environment().CartellaLocale + "/" + ChiaveBlocco(tipo); });
  Prosegui([&] { DeleteLocalFile(locale); });
  Prosegui([&] {
    std::string testo;
    // One byte more tells whether it is longer than what is read of it.
    ActiveServices().hostLink().ReceiveBeginning(hostIP, remoto, locale, MaxRead + 1, testo);
  });
  Prosegui([&] {
    std::vector<std::string> righe = RigheDelBlocco(ReadLocalBeginning(locale));
    riga1 = std::move(righe[0]);
    riga2 = std::move(righe[1]);
  });
  if (!MaggioreDiSpazio(riga1)) {
    Prosegui([&] {
      WriteLocalFile(locale, TestoDelBlocco(RigheDiChiBlocca()));
      ActiveServices().hostLink().InviaFile(hostIP, locale, remoto);
    });
    return "";
  }
  const bool lista = tipo == "CREDITI" || tipo == "DEBITI";
  const std::string prima = lista ? "Area " + std::string(tipo) + " in manutenzione presso un altro terminale"
                                  : "Il movimento è in uso su un altro terminare";
  Prosegui([&] { ShowBox(prima + "\r" + riga1 + "\r" + riga2); });
  return riga1;
}

std::string SbloccaArea(std::string_view hostIP, std::string_view tipo) {
  Prosegui([&] { ActiveServices().hostLink().CancellaFile(hostIP, FileDelBlocco(tipo)); });
  return "";
}

} // namespace lumoscad
