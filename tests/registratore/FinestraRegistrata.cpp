#include "FinestraRegistrata.hpp"

#include <algorithm>

namespace lumoscad::prova {
namespace {

/// Longer lists are written by their first rows and a digest of them all.
constexpr std::size_t RigheIntere = 12;
constexpr std::size_t RigheDiAssaggio = 3;

std::string SiNo(bool valore) {
  return valore ? "sì" : "no";
}

std::string Numero(long long valore) {
  return std::to_string(valore);
}

std::string Editor(const EditorCella& editor) {
  if (!editor.visibile) {
    return "chiuso";
  }
  return "aperto alto " + Numero(editor.alto) + " sinistra " + Numero(editor.sinistra) + " larghezza " +
         Numero(editor.larghezza) + " testo " + Cita(editor.testo) + " indice " + Numero(editor.indice);
}

std::string Unite(const std::vector<std::string>& parti, std::string_view separatore) {
  std::string testo;
  for (std::size_t i = 0; i < parti.size(); ++i) {
    testo.append(i == 0 ? "" : separatore).append(parti[i]);
  }
  return testo;
}

} // namespace

FinestraRegistrata::FinestraRegistrata(Registro& registro, const FinestraElenco& vera)
    : registro_(registro), vera_(vera) {}

FinestraRegistrata::FinestraRegistrata(Registro& registro, const FinestraScadenzario& vera)
    : registro_(registro), vera_(vera.elenco), scadenzario_(vera) {}

template <typename... Tipi>
void FinestraRegistrata::Ascolta(std::function<void(Tipi...)>& gesto,
                                 std::type_identity_t<std::function<std::string(Tipi...)>> nome) {
  if (gesto) {
    gesto = [this, vero = gesto, nome](Tipi... valori) { Gesto(nome(valori...), [&] { vero(valori...); }); };
  }
}

FinestraElenco FinestraRegistrata::Elenco() {
  using Testo = std::string_view;
  const auto fisso = [](const char* nome) { return std::function<std::string()>([nome] { return nome; }); };
  const auto conNumero = [](const char* nome) {
    return std::function<std::string(int)>([nome](int valore) { return nome + (" " + Numero(valore)); });
  };
  const auto conTesto = [](const char* nome) {
    return std::function<std::string(Testo)>([nome](Testo testo) { return nome + (" " + Cita(testo)); });
  };
  FinestraElenco finestra = vera_;
  Ascolta<std::ptrdiff_t>(finestra.seleziona, [](std::ptrdiff_t riga) { return "seleziona " + Numero(riga); });
  Ascolta<int, int>(finestra.premeMouse, [this](int x, int) { return "preme il mouse su " + ColonnaSotto(x); });
  Ascolta<int>(finestra.clic, conNumero("clic alto"));
  Ascolta<int>(finestra.clicTestata, conNumero("clic testata"));
  Ascolta<>(finestra.clicFuori, fisso("clic fuori"));
  Ascolta<Testo>(finestra.testoEditor, conTesto("scrive nella cella"));
  Ascolta<int>(finestra.tastoEditor, conNumero("tasto nella cella"));
  Ascolta<int>(finestra.scegliBancaCella, conNumero("banca nella cella"));
  Ascolta<>(finestra.perdeFuocoBancaCella, fisso("lascia la banca della cella"));
  Ascolta<>(finestra.abbandonaEditor, fisso("abbandona l'editor"));
  Ascolta<Testo>(finestra.testoScadenza, conTesto("scrive in alto"));
  Ascolta<>(finestra.clicScadenza, fisso("clic sulla data in alto"));
  Ascolta<int>(finestra.scegliBanca, conNumero("banca in alto"));
  Ascolta<>(finestra.conferma, fisso("Conferma"));
  Ascolta<>(finestra.annulla, fisso("Annulla"));
  Ascolta<>(finestra.chiudi, fisso("chiude la finestra"));
  return finestra;
}

FinestraScadenzario FinestraRegistrata::Scadenzario() {
  FinestraScadenzario finestra = scadenzario_;
  finestra.elenco = Elenco();
  Ascolta<std::size_t>(finestra.spunta,
                       [](std::size_t riga) { return "spunta " + Numero(static_cast<long long>(riga)); });
  Ascolta<>(finestra.selezionaTutto, [] { return std::string("seleziona tutto"); });
  Ascolta<>(finestra.perdeFuocoEditor, [] { return std::string("lascia la cella"); });
  Ascolta<>(finestra.perdeFuocoScadenza, [] { return std::string("lascia la data in alto"); });
  return finestra;
}

std::string FinestraRegistrata::ColonnaSotto(int x) const {
  int fine = 0;
  for (const auto& colonna : vera_.colonne) {
    fine += colonna.larghezza;
    if (x < fine) {
      return colonna.chiave;
    }
  }
  return "niente";
}

std::vector<std::string> FinestraRegistrata::Riga(std::size_t riga) const {
  std::vector<std::string> celle;
  for (int colonna = 0; colonna < static_cast<int>(vera_.colonne.size()); ++colonna) {
    const bool spunta = vera_.colonne[static_cast<std::size_t>(colonna)].genere == ColonnaElenco::Genere::Spunta;
    celle.push_back(spunta ? (vera_.spuntata(riga, colonna) ? "[x]" : "[ ]") : std::string(vera_.testo(riga, colonna)));
  }
  return celle;
}

FinestraRegistrata::Aspetto FinestraRegistrata::Guarda() const {
  const StatoElenco& stato = vera_.stato();
  Aspetto aspetto;
  aspetto.stato = {"riga selezionata " + Numero(stato.selezionata),
                   "editor della data " + Editor(stato.data),
                   "editor della banca " + Editor(stato.banca),
                   "data in alto " + Cita(stato.testoScadenza),
                   "banca in alto " + Numero(stato.indiceBanca),
                   "testata ordinata " + Numero(stato.testataOrdinata) + (stato.crescente ? " crescente" : " calante"),
                   "barrette nascoste " + SiNo(stato.barretteNascoste),
                   "lista " + Numero(stato.larghezzaLista) + " x " + Numero(stato.altezzaLista),
                   "scaricata " + SiNo(stato.scaricata)};
  if (scadenzario_.stato) {
    const StatoScadenzario& suo = scadenzario_.stato();
    aspetto.stato.push_back("PicSelezionaTutto " + Cita(suo.selezionaTutto));
    aspetto.stato.push_back("descrizione visibile " + SiNo(suo.descrizioneVisibile));
    aspetto.stato.push_back("primo piano " + SiNo(suo.primoPiano));
  }
  for (std::size_t riga = 0; riga < vera_.righe(); ++riga) {
    aspetto.righe.push_back(Unite(Riga(riga), "|"));
  }
  return aspetto;
}

void FinestraRegistrata::Descrivi() {
  std::vector<std::string> testo{"finestra " + vera_.nome + " " + Cita(vera_.titolo) + " lista " + vera_.nomeLista +
                                 " carattere " + Cita(vera_.carattere) + " righe senza scorrere " +
                                 Numero(vera_.righeSenzaScorrere)};
  for (const auto& colonna : vera_.colonne) {
    testo.push_back("  colonna " + colonna.chiave + " " + Cita(colonna.intestazione) + " larga " +
                    Numero(colonna.larghezza) + " genere " + Numero(static_cast<int>(colonna.genere)) + " attuale " +
                    Numero(colonna.attuale));
  }
  for (const auto& testata : vera_.testate) {
    testo.push_back("  testata " + Numero(testata.indice) + " " + Cita(testata.testo) + " colonne " +
                    Numero(testata.prima) + "-" + Numero(testata.ultima) + " sinistra " + Numero(testata.sinistra) +
                    " larga " + Numero(testata.larghezza) + (testata.ordina ? " ordina" : ""));
  }
  for (const auto& etichetta : vera_.etichette) {
    testo.push_back("  etichetta " + etichetta.nome + " " + Cita(etichetta.testo));
  }
  for (const auto& riga : scadenzario_.descrizione) {
    testo.push_back("  descrizione " + riga.didascalia.nome + " " + Cita(riga.didascalia.testo) + " " +
                    riga.valore.nome + " " + Cita(riga.valore.testo));
  }
  testo.push_back("  campo della data " + (vera_.campoData ? Cita(*vera_.campoData) : "assente") + ", della banca " +
                  (vera_.campoBanca ? Cita(*vera_.campoBanca) : "assente"));
  testo.push_back("  banche " + Unite(vera_.banche, "|"));
  testo.push_back("  banche della cella " +
                  (vera_.bancheCella == vera_.banche ? "le stesse" : Unite(vera_.bancheCella, "|")));
  registro_.AnnotaUnaVolta(testo);
  const Aspetto aspetto = Guarda();
  registro_.Annota("  stato " + Unite(aspetto.stato, ", "));
  DescriviRighe(aspetto.righe);
}

void FinestraRegistrata::DescriviRighe(const std::vector<std::string>& righe) {
  const bool intere = righe.size() <= RigheIntere;
  registro_.Annota("  righe: " + Numero(static_cast<long long>(righe.size())) +
                   (intere ? "" : " impronta " + Impronta(Unite(righe, "\n"))));
  for (std::size_t riga = 0; riga < (intere ? righe.size() : RigheDiAssaggio); ++riga) {
    registro_.Annota("    " + Numero(static_cast<long long>(riga)) + " " + righe[riga]);
  }
}

void FinestraRegistrata::Differenze(const Aspetto& prima, const Aspetto& dopo) {
  for (std::size_t i = 0; i < dopo.stato.size(); ++i) {
    if (prima.stato[i] != dopo.stato[i]) {
      registro_.Annota("    " + dopo.stato[i]);
    }
  }
  if (prima.righe == dopo.righe) {
    return;
  }
  auto ordinate = prima.righe;
  auto nuove = dopo.righe;
  std::sort(ordinate.begin(), ordinate.end());
  std::sort(nuove.begin(), nuove.end());
  if (ordinate == nuove || prima.righe.size() != dopo.righe.size()) {
    DescriviRighe(dopo.righe);
    return;
  }
  for (std::size_t riga = 0; riga < dopo.righe.size(); ++riga) {
    if (prima.righe[riga] != dopo.righe[riga]) {
      registro_.Annota("    riga " + Numero(static_cast<long long>(riga)) + " " + dopo.righe[riga]);
    }
  }
}

void FinestraRegistrata::Gesto(const std::string& quale, const std::function<void()>& azione) {
  const Aspetto prima = Guarda();
  registro_.Annota("  gesto: " + quale);
  azione();
  Differenze(prima, Guarda());
}

} // namespace lumoscad::prova
