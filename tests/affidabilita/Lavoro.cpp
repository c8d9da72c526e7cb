#include "Lavoro.hpp"

#include "Campi.hpp"

#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>
#include <set>

namespace lumoscad::test {

std::string Postazione(int quale) {
  return "T0" + std::to_string(quale);
}

std::size_t LeggiComandi(const Sistema& sistema, const std::string& postazione, std::vector<Eseguito>& comandi) {
  const auto suoi = LeggiRegistro(sistema.Registro(postazione));
  comandi.insert(comandi.end(), suoi.begin(), suoi.end());
  return suoi.size();
}

Stato LeggiStato(Sistema& sistema) {
  Stato stato;
  for (const std::string& riga : sistema.Interroga("SELECT CHIAVE, RIGA FROM STATO", '\t')) {
    stato[riga.substr(0, riga.find('\t'))] = riga.substr(riga.find('\t') + 1);
  }
  return stato;
}

std::vector<Conferma> LeggiConferme(Sistema& sistema) {
  std::vector<Conferma> conferme;
  std::map<std::string, std::size_t> posti;
  for (const std::string& riga :
       sistema.Interroga("SELECT TRANSAZIONE, COMANDO, ORA FROM CONFERMA ORDER BY POSTO", '\t')) {
    const Testi campi = Separa(riga);
    posti[campi.at(0)] = conferme.size();
    conferme.push_back({campi.at(1), std::stoll(campi.at(2)), {}});
  }
  const auto valore = [](const std::string& testo) { return testo == "<NULL>" ? std::nullopt : std::optional(testo); };
  for (const std::string& riga :
       sistema.Interroga("SELECT TRANSAZIONE, CHIAVE, PRIMA, DOPO FROM VARIAZIONE ORDER BY ID", '\t')) {
    const Testi campi = Separa(riga);
    conferme.at(posti.at(campi.at(0))).cambi.push_back({campi.at(1), valore(campi.at(2)), valore(campi.at(3))});
  }
  return conferme;
}

Testi AccettateDallHost(const Sistema& sistema) {
  Testi richieste;
  for (const std::string& riga : LeggiRighe(sistema.RegistroHost())) {
    const Testi campi = Separa(riga);
    if (campi[0] == "ACCETTATA") {
      richieste.push_back(Unisci({campi.begin() + 3, campi.end()}));
    }
  }
  std::sort(richieste.begin(), richieste.end());
  return richieste;
}

Testi AccettatePerITerminali(const std::vector<Eseguito>& comandi) {
  Testi richieste;
  for (const Eseguito& comando : comandi) {
    if (comando.accettata) {
      Testi campi = comando.richiesta;
      campi.push_back(comando.contenuto);
      richieste.push_back(Unisci(campi));
    }
  }
  std::sort(richieste.begin(), richieste.end());
  return richieste;
}

void StampaComandi(const std::string& inizio, const std::vector<Eseguito>& comandi) {
  std::map<std::string, std::map<std::string, std::size_t>> conti;
  for (const Eseguito& comando : comandi) {
    const auto secondo = comando.comando.find(' ', 3);
    const auto terzo = secondo == std::string::npos ? secondo : comando.comando.find(' ', secondo + 1);
    ++conti[comando.comando.substr(3, terzo == std::string::npos ? terzo : terzo - 3)]
           [comando.risultato.empty() ? "fatto" : comando.risultato];
  }
  for (auto& [comando, esiti] : conti) {
    std::printf("%s: %-20s %4zu riusciti %4zu chiusi %4zu con errore\n", inizio.c_str(), comando.c_str(),
                esiti["fatto"], esiti["closed"], esiti["error"]);
  }
}

void StampaRiscontro(const std::string& inizio, const Riscontro& riscontro, const std::vector<Eseguito>& comandi) {
  const auto accettati = std::count_if(comandi.begin(), comandi.end(), [](const auto& c) { return c.accettata; });
  std::set<std::string> terminali;
  for (const Eseguito& comando : comandi) {
    terminali.insert(comando.nome.substr(0, comando.nome.find('.')));
  }
  const char* prima = inizio.c_str();
  std::printf("%s: %zu comandi di %zu terminali, %ld accettati dall'host, %zu transazioni confermate\n", prima,
              comandi.size(), terminali.size(), static_cast<long>(accettati), riscontro.confermati);
  std::printf("%s: %zu nell'ordine delle conferme, %zu spiegati da una conferma altrui nel frattempo, %zu senza "
              "più nulla da variare, %zu rifiutati dalla base dati con un messaggio\n",
              prima, riscontro.inOrdine, riscontro.sovrapposti, riscontro.senzaEffetto, riscontro.detti);
  std::printf("%s: %zu righe di richieste riuscite non trovavano più la loro scadenza\n", prima, riscontro.lineePerse);
}

} // namespace lumoscad::test
