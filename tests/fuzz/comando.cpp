#include "Bersagli.hpp"

#include "common/Testo.hpp"
#include "database/moduloDatabase.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <algorithm>
#include <filesystem>

namespace lumoscad::fuzz {
namespace {

constexpr std::string_view Canarino = "Canarino7Segreto";

/// What the command line says without any handler's help.
struct Lettura {
  std::string tipo;
  bool tipoSenzaValore = false;
  std::vector<std::string> pezzi;
};

Lettura Leggi(std::string_view riga) {
  Lettura lettura;
  lettura.pezzi = Dividi(Maiuscolo(riga), ' ');
  for (std::size_t i = 0; i < lettura.pezzi.size(); ++i) {
    if (lettura.pezzi[i] != "-T") {
      continue;
    }
    lettura.tipoSenzaValore = i + 1 == lettura.pezzi.size();
    lettura.tipo = lettura.tipoSenzaValore ? "" : lettura.pezzi[i + 1];
  }
  return lettura;
}

bool HaSottocomando(const Lettura& lettura) {
  const auto uno = [&](std::initializer_list<std::string_view> nomi) {
    return std::any_of(lettura.pezzi.begin(), lettura.pezzi.end(), [&](const std::string& pezzo) {
      return std::find(nomi.begin(), nomi.end(), pezzo) != nomi.end();
    });
  };
  if (lettura.tipo == "EXTRA") {
    return uno({"/A"});
  }
  if (lettura.tipo == "SOSPESO" || lettura.tipo == "PRESUNTO") {
    return uno({"/A", "/D"});
  }
  if (lettura.tipo == "BANCA") {
    return uno({"/CREDITI", "/DEBITI", "/PRESUNTI"});
  }
  return lettura.tipo == "TEST" || (lettura.tipo == "CONSEGNA" && uno({"/PRESUNTI"}));
}

void PreparaHost(test::RecordedHost& host, std::string_view testo) {
  const auto risposta = Parte(testo, '\n', 1);
  if (!risposta.empty()) {
    host.reply = risposta;
  }
  const auto blocco = Parte(testo, '\n', 2);
  if (!blocco.empty()) {
    for (const char* area : {"CREDITI", "DEBITI", "PRESUNTI"}) {
      host.file["/tmp/VB" + std::string(area)] = blocco;
    }
  }
  const auto guasta = Parte(testo, '\n', 3);
  if (!guasta.empty()) {
    const auto quale = static_cast<std::size_t>(static_cast<unsigned char>(guasta.front()) % 16);
    host.fault = [&host, quale](const std::string& operazione) {
      if (host.operazioni.size() == quale + 1) {
        throw RuntimeError(errors::Driver, "Guasto di " + operazione);
      }
    };
  }
}

/// The host's reply is repeated to the person and may itself spell the canary: then nothing can be told.
bool Rivela(const test::TestBench& banco) {
  const auto contiene = [](std::string_view testo) { return testo.find(Canarino) != std::string_view::npos; };
  bool trovato = std::any_of(banco.desktop.box.begin(), banco.desktop.box.end(), contiene) ||
                 std::any_of(banco.host.operazioni.begin(), banco.host.operazioni.end(), contiene) ||
                 std::any_of(banco.host.uploads.begin(), banco.host.uploads.end(), contiene);
  for (const auto& parametri : banco.host.calls) {
    trovato = trovato || std::any_of(parametri.begin(), parametri.end(), contiene);
  }
  return trovato;
}

void ControllaLocale(const test::TestBench& banco) {
  namespace fs = std::filesystem;
  for (const auto& voce : fs::directory_iterator(banco.environment.CartellaLocale)) {
    const auto nome = voce.path().filename().string();
    Esigi(nome.starts_with("VB") || nome.starts_with("sospeso-"),
          "resta un file locale che non è un blocco né una nota");
  }
}

} // namespace

void Comando(Ingresso ingresso) {
  TogliLeSorgenti();
  const std::string_view testo = Testo(ingresso);
  const std::string riga = std::string(Parte(testo, '\n', 0)) + " -X x -DB2PASS " + std::string(Canarino);
  test::TestBench banco;
  PreparaHost(banco.host, testo);
  const std::string risultato = LumoScadenze().EseguiLumoScad(riga);

  const Lettura lettura = Leggi(riga);
  Esigi(risultato.empty() || risultato == "error" || risultato == "closed", "risultato sconosciuto");
  Esigi(stato().ComandoCorrente == riga, "la riga non è conservata com'è");
  Esigi(moduloDatabase::LeggiParametriDB2(riga).Password == Canarino, "la password è l'ultima scritta");
  Esigi(risultato != "error" || !banco.desktop.box.empty(), "un errore senza messaggio");
  if (!lettura.tipoSenzaValore && !HaSottocomando(lettura)) {
    Esigi(risultato.empty() && banco.desktop.box.empty() && banco.host.operazioni.empty(),
          "un comando che non c'è ha fatto qualcosa");
  }
  Esigi(testo.find(Canarino) != std::string_view::npos || !Rivela(banco), "la password è uscita");
  Esigi(banco.desktop.pointers.empty() || risultato == "error" || banco.desktop.pointers.back() == Pointer::Standard,
        "il puntatore è rimasto una clessidra");
  ControllaLocale(banco);
}

} // namespace lumoscad::fuzz
