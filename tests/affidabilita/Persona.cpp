#include "Persona.hpp"

#include "common/Testo.hpp"

namespace lumoscad::test {

int Persona::Fra(int minimo, int massimo) {
  // The library's own distributions may differ from one to the next.
  return minimo + static_cast<int>(caso_() % static_cast<unsigned>(massimo - minimo + 1));
}

std::string Persona::Prossimo() {
  const int dado = Fra(1, 100);
  if (dado <= 20) {
    return Scadenze("CREDITI");
  }
  if (dado <= 32) {
    return Scadenze("DEBITI");
  }
  if (dado <= 44) {
    return Presunti(false);
  }
  if (dado <= 56) {
    return Presunti(true);
  }
  if (dado <= 72) {
    return Sospensione();
  }
  if (dado <= 84) {
    return Presunto();
  }
  if (dado <= 94) {
    return "-T EXTRA /A -H locale -D 01 -S A -E 2006 -N " + std::to_string(Fra(1, misura_.extra));
  }
  return "-T TEST";
}

std::string Persona::Gesti(bool date, bool banche) {
  std::string gesti;
  for (int quanti = Fra(1, 3); quanti > 0; --quanti) {
    const std::string riga = std::to_string(Fra(0, 10000));
    if (date && (!banche || Fra(0, 1) == 0)) {
      gesti += "data:" + riga + ":" + ConZeri(Fra(1, 28), 2) + "/0" + std::to_string(Fra(4, 9)) + "/26;";
    } else {
      gesti += "banca:" + riga + ":" + std::to_string(Fra(0, 6)) + ";";
    }
  }
  const int fine = Fra(1, 12);
  return gesti + (fine == 1 ? "annulla" : fine == 2 ? "chiudi" : "conferma");
}

std::string Persona::Scadenze(const std::string& lista) {
  std::string comando = "-T BANCA /" + lista + " -H locale -D 01 -B X";
  if (lista == "CREDITI" && Fra(0, 1) == 0) {
    comando += " -C " + std::to_string(20100000 + Fra(1, misura_.clienti));
  }
  return comando + "\t" + Gesti(true, true);
}

std::string Persona::Presunti(bool consegna) {
  return std::string(consegna ? "-T CONSEGNA" : "-T BANCA") + " /PRESUNTI -H locale -D 01 -B X -TIPOMOVIMENTI V\t" +
         Gesti(consegna, !consegna);
}

std::string Persona::Sospensione() {
  const int partita = Fra(1, misura_.partite);
  return std::string("-T SOSPESO /") + (Fra(0, 1) == 0 ? "A" : "D") + " -H locale -D 01 -C " +
         ContoDellaPartita(misura_, partita) + " -P AB   " + std::to_string(partita);
}

std::string Persona::Presunto() {
  return std::string("-T PRESUNTO /") + (Fra(0, 1) == 0 ? "A" : "D") + " -H locale -D 01 -S OC -A 06 -N " +
         std::to_string(Fra(1, misura_.documenti)) + " -E 2006";
}

} // namespace lumoscad::test
