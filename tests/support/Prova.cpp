#include "support/Prova.hpp"

#include "platform/Errore.hpp"
#include "platform/xml/Nodo.hpp"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace lumoscad::prova {
namespace {

std::string CartellaNuova() {
  std::random_device caso;
  for (;;) {
    const auto cartella =
        std::filesystem::temp_directory_path() / ("lumoscad-prova-" + std::to_string(caso()) + std::to_string(caso()));
    if (std::filesystem::create_directory(cartella)) {
      std::filesystem::permissions(cartella, std::filesystem::perms::owner_all);
      return cartella.string();
    }
  }
}

std::string Leggi(const std::string& percorso) {
  std::ifstream file(percorso, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

void DesktopRecitato::MostraBox(std::string_view testo, std::string_view titolo) {
  if (guasto) {
    guasto();
  }
  box.emplace_back(testo);
  titoli.emplace_back(titolo);
}

void DesktopRecitato::ImpostaPuntatore(Puntatore puntatore) {
  puntatori.push_back(puntatore);
}

void DesktopRecitato::EventiInAttesa() {
  ++respiri;
}

void DesktopRecitato::MostraElenco(FinestraElenco& finestra) {
  ++finestre;
  if (!copioni.empty()) {
    const Copione copione = copioni.front();
    copioni.pop_front();
    copione(finestra);
  }
  if (!finestra.Stato().scaricata) {
    finestra.Form_QueryUnload();
  }
}

void DesktopRecitato::MostraScadenzario(FinestraScadenzario& finestra) {
  ++finestre;
  if (!copioniScadenzario.empty()) {
    const CopioneScadenzario copione = copioniScadenzario.front();
    copioniScadenzario.pop_front();
    copione(finestra);
  }
  if (!finestra.Elenco().Stato().scaricata) {
    finestra.Elenco().Form_QueryUnload();
  }
}

void DesktopRecitato::MostraAttesa(std::string_view testo, int millisecondi, const std::function<void()>& lavoro) {
  attese.emplace_back(testo);
  intervalli.push_back(millisecondi);
  if (!attesaInterrotta) {
    lavoro();
  }
}

void HostRegistrato::Annota(std::string_view indirizzo, const std::string& operazione) {
  operazioni.push_back(operazione);
  host.emplace_back(indirizzo);
  if (guasto) {
    guasto(operazione);
  }
}

void HostRegistrato::EseguiProgramma(std::string_view indirizzo, std::string_view programma,
                                     const std::vector<std::string>& parametri, nexaro::XMLParser& destinatario) {
  Annota(indirizzo, "Esegui " + std::string(programma));
  chiamate.push_back(parametri);
  destinatario.Avviato = true;
  destinatario.Consegna(xml::Leggi(risposta));
}

void HostRegistrato::RiceviInizio(std::string_view indirizzo, std::string_view remoto, std::string_view locale,
                                  std::size_t massimo, std::string& testo) {
  massimi.push_back(massimo);
  RiceviFile(indirizzo, remoto, locale, testo);
  if (std::filesystem::file_size(locale) > massimo) {
    std::filesystem::resize_file(locale, massimo);
  }
}

void HostRegistrato::RiceviFile(std::string_view indirizzo, std::string_view remoto, std::string_view locale,
                                std::string&) {
  Annota(indirizzo, "Ricevi " + std::string(remoto));
  const auto trovato = file.find(std::string(remoto));
  if (trovato == file.end()) {
    throw ErroreRuntime(errori::FileNonTrovato, "File inesistente sull'host: " + std::string(remoto));
  }
  std::ofstream(std::string(locale), std::ios::binary) << trovato->second;
}

void HostRegistrato::InviaFile(std::string_view indirizzo, std::string_view locale, std::string_view remoto) {
  Annota(indirizzo, "Invia " + std::string(remoto));
  inviati.push_back(Leggi(std::string(locale)));
  file[std::string(remoto)] = inviati.back();
}

void HostRegistrato::RinominaFile(std::string_view indirizzo, std::string_view remoto, std::string_view nuovo,
                                  std::string&) {
  Annota(indirizzo, "Rinomina " + std::string(remoto) + " " + std::string(nuovo));
  auto nodo = file.extract(std::string(remoto));
  if (nodo.empty()) {
    throw ErroreRuntime(errori::FileNonTrovato, "File inesistente sull'host: " + std::string(remoto));
  }
  file[std::string(nuovo)] = std::move(nodo.mapped());
}

void HostRegistrato::CancellaFile(std::string_view indirizzo, std::string_view remoto) {
  Annota(indirizzo, "Cancella " + std::string(remoto));
  file.erase(std::string(remoto));
}

Banco::Banco()
    : ambiente{"T01", CartellaNuova()},
      servizi_({[this]() -> Desktop& { return desktop; }, [this]() -> nexaro::HostLink& { return host; },
                [this]() -> const nexaro::Ambiente& { return ambiente; }, [this] { return adesso; },
                [this](std::string_view istruzione) { istruzioni.emplace_back(istruzione); }}) {}

Banco::~Banco() {
  std::error_code ignorato;
  std::filesystem::remove_all(ambiente.CartellaLocale, ignorato);
}

} // namespace lumoscad::prova
