#include "Modello.hpp"

#include "common/Testo.hpp"

#include <algorithm>

namespace lumoscad::test {
namespace {

/// The columns of an event in the view STATO.
enum Colonna : std::size_t {
  MovimentoDi,
  PartitaDi,
  ContoDi,
  Tipo,
  Sospesa,
  Scadenza,
  Originale,
  Rata,
  Banca,
  DataConsegna,
  Titolo
};

constexpr const char* Nessuno = "-";

std::string Componi(const std::vector<std::string>& riga) {
  std::string testo;
  for (const std::string& campo : riga) {
    testo += (&campo == &riga.front() ? "" : "|") + campo;
  }
  return testo;
}

/// A date of a request line as the database shows it.
std::string Data(const std::string& data) {
  if (data.empty() || data == "00000000") {
    return Nessuno;
  }
  return data.substr(0, 4) + "-" + data.substr(4, 2) + "-" + data.substr(6);
}

std::vector<std::vector<std::string>> Linee(const std::string& contenuto) {
  std::vector<std::vector<std::string>> linee;
  for (std::size_t inizio = 0; inizio < contenuto.size();) {
    const auto fine = contenuto.find("\r\n", inizio);
    linee.push_back(Dividi(std::string_view(contenuto).substr(inizio, fine - inizio), ','));
    inizio = fine + 2;
  }
  return linee;
}

/// Lets `cambia` change a copy of every event that it wants to, and takes down what came out different.
template <typename Cambia> void OgniEvento(const Stato& stato, Effetto& effetto, Cambia cambia) {
  for (auto riga = stato.lower_bound("E"); riga != stato.end() && riga->first[0] == 'E'; ++riga) {
    // A line of the same command may have changed the row before.
    const auto gia = effetto.find(riga->first);
    const std::string& attuale = gia == effetto.end() ? riga->second : *gia->second;
    std::vector<std::string> campi = Dividi(attuale, '|');
    if (cambia(campi) && Componi(campi) != attuale) {
      effetto[riga->first] = Componi(campi);
    }
  }
}

} // namespace

Modello::Modello(const Misura& misura, const Stato& iniziale) {
  for (int banca = 1; banca <= 6; ++banca) {
    conti_["6010000" + std::to_string(banca)] = std::to_string(banca);
  }
  for (int i = 0; i < misura.clienti; ++i) {
    conti_[std::to_string(20100001 + i)] = std::to_string(101 + i);
  }
  for (int i = 0; i < misura.fornitori; ++i) {
    conti_[std::to_string(40100001 + i)] = std::to_string(201 + i);
  }
  for (int partita = 1; partita <= misura.partite; ++partita) {
    partite_[ContoDellaPartita(misura, partita) + "/AB" + std::to_string(partita)] = std::to_string(partita);
  }
  for (const auto& [chiave, riga] : iniziale) {
    if (chiave[0] == 'M') {
      movimenti_[riga] = chiave.substr(1);
    }
  }
}

std::string Modello::Conto(const std::string& codice) const {
  return codice == Nullo || codice.empty() ? Nessuno : conti_.at(codice);
}

std::string Modello::Movimento(const std::string& testo) const {
  return movimenti_.at(testo);
}

Effetto Modello::Di(const Eseguito& comando, const Stato& stato) const {
  Effetto effetto;
  if (comando.comando == "-T TEST") {
    if (stato.at("R100") != "FILEccccc") {
      effetto["R100"] = "FILEccccc";
    }
    return effetto;
  }
  if (comando.richiesta.empty()) {
    return effetto;
  }
  const std::string& nome = comando.richiesta.at(1);
  if (nome == "CANALIZZAZIONE" && comando.richiesta.at(2) == "PRESUNTI") {
    BancaPresunti(comando, stato, effetto);
  } else if (nome == "CANALIZZAZIONE") {
    Canalizzazione(comando, stato, effetto);
  } else if (nome == "CONSEGNA") {
    Consegna(comando, stato, effetto);
  } else if (nome == "EXTRADEL") {
    Cancellazione(comando, stato, effetto);
  } else {
    Sospensione(comando, stato, effetto);
  }
  return effetto;
}

void Modello::Canalizzazione(const Eseguito& comando, const Stato& stato, Effetto& effetto) const {
  for (const Riga& linea : Linee(comando.contenuto)) {
    std::string numero = linea.at(1);
    numero.erase(std::remove(numero.begin(), numero.end(), ' '), numero.end());
    const std::string& partita = partite_.at(linea.at(0) + "/" + numero);
    OgniEvento(stato, effetto, [&](Riga& riga) {
      if (riga[PartitaDi] != partita || riga[Tipo] != "C" || riga[Sospesa] != "N" || riga[Rata] != linea.at(10) ||
          riga[Originale] != Data(linea.at(5)) || riga[Scadenza] != Data(linea.at(6)) ||
          riga[Banca] != Conto(linea.at(8))) {
        return false;
      }
      if (!linea.at(7).empty()) {
        riga[Scadenza] = Data(linea[7]);
      }
      if (!linea.at(9).empty()) {
        riga[Banca] = Conto(linea[9]);
      }
      return true;
    });
  }
}

void Modello::BancaPresunti(const Eseguito& comando, const Stato& stato, Effetto& effetto) const {
  for (const Riga& linea : Linee(comando.contenuto)) {
    const std::string movimento = Movimento("N|" + linea.at(4) + "|" + linea.at(3) + linea.at(2) + "|2006");
    OgniEvento(stato, effetto, [&](Riga& riga) {
      if (riga[MovimentoDi] != movimento || riga[ContoDi] != Conto(linea.at(0)) || riga[Sospesa] != "N" ||
          riga[Banca] != Conto(linea.at(8))) {
        return false;
      }
      riga[Banca] = Conto(linea.at(9));
      return true;
    });
  }
}

void Modello::Consegna(const Eseguito& comando, const Stato& stato, Effetto& effetto) const {
  for (const Riga& linea : Linee(comando.contenuto)) {
    const std::string movimento = Movimento("N|" + linea.at(1) + "|" + linea.at(2) + linea.at(3) + "|2006");
    OgniEvento(stato, effetto, [&](Riga& riga) {
      if (riga[MovimentoDi] != movimento || riga[Sospesa] != "N" || riga[DataConsegna] != Data(linea.at(4))) {
        return false;
      }
      riga[DataConsegna] = Data(linea.at(6));
      riga[Titolo] = " ";
      return true;
    });
  }
}

void Modello::Sospensione(const Eseguito& comando, const Stato& stato, Effetto& effetto) const {
  const auto& parametri = comando.richiesta;
  const bool presunto = parametri.at(1).starts_with("PRESUNTO");
  const std::string flag = parametri[1].ends_with("CREA") ? "S" : "N";
  const std::string chiave = presunto
                                 ? Movimento("N|" + parametri.at(2) + "|" + parametri.at(4) + parametri.at(3) + "|2006")
                                 : partite_.at(parametri.at(2) + "/" + parametri.at(3));
  OgniEvento(stato, effetto, [&](Riga& riga) {
    const bool sua =
        presunto ? riga[MovimentoDi] == chiave && riga[Tipo] == "P" : riga[PartitaDi] == chiave && riga[Tipo] == "C";
    riga[Sospesa] = sua ? flag : riga[Sospesa];
    return sua;
  });
}

void Modello::Cancellazione(const Eseguito& comando, const Stato& stato, Effetto& effetto) const {
  const auto& parametri = comando.richiesta;
  const std::string movimento = Movimento("X|" + parametri.at(2) + "|" + parametri.at(4) + "|" + parametri.at(3));
  if (stato.count("M" + movimento) == 0) {
    return;
  }
  effetto["M" + movimento] = std::nullopt;
  for (const auto& [chiave, riga] : stato) {
    if (chiave[0] == 'E' && Dividi(riga, '|')[MovimentoDi] == movimento) {
      effetto[chiave] = std::nullopt;
    }
  }
}

} // namespace lumoscad::test
