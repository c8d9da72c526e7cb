#pragma once

#include "BaseDelleAzioni.hpp"
#include "ModificheDiProva.hpp"
#include "entry/InSospeso.hpp"

#include <string>
#include <vector>

namespace lumoscad::test {

/// A database with a note beside it.
class NotaSuBase {
 public:
  NotaSuBase(const char* genere, const ModificaProvata& provata)
      : base(genere, DatiDelleModifiche()), modifica(provata.modifica) {
    if (!provata.prima.empty()) {
      base.Esegui(provata.prima);
    }
    stato().ComandoCorrente = Opzioni();
    stato().azienda = "001";
    base.Script("CREATE TABLE EVENTI_INIZIALI AS SELECT * FROM EVENTOCONTABILE;"
                "CREATE TABLE MOVIMENTI_INIZIALI AS SELECT * FROM MOVIMENTOCONTABILE;");
    prima = Tutto(base);
    dopo = Dopo();
    banco.statements.clear();
  }

  [[nodiscard]] std::string Opzioni() const { return base.Opzioni() + " -DB2SCHEMA " + base.Schema(); }
  std::string Lascia(FaseNota fase) { return nota = LasciaNota(modifica, fase); }
  [[nodiscard]] NotaInSospeso Guarda() const { return GuardaNota(nota, Opzioni()); }
  [[nodiscard]] EsitoInSospeso Riallinea() const { return RiallineaVista(Guarda(), Opzioni()); }
  [[nodiscard]] bool NotaRimasta() const { return GuardaNota(nota, "").errore.empty(); }
  [[nodiscard]] std::vector<std::string> Stati() const {
    std::vector<std::string> stati;
    for (const RigaInSospeso& riga : Guarda().righe) {
      stati.push_back(riga.stato);
    }
    return stati;
  }
  void Ripristina() const {
    base.Script("DELETE FROM EVENTOCONTABILE;DELETE FROM MOVIMENTOCONTABILE;"
                "INSERT INTO EVENTOCONTABILE SELECT * FROM EVENTI_INIZIALI;"
                "INSERT INTO MOVIMENTOCONTABILE SELECT * FROM MOVIMENTI_INIZIALI;");
  }
  /// The statements sent that would change something.
  [[nodiscard]] std::vector<std::string> Modifiche() const {
    std::vector<std::string> modifiche;
    for (const std::string& sql : banco.statements) {
      if (sql.starts_with("UPDATE") || sql.starts_with("DELETE") || sql.starts_with("INSERT")) {
        modifiche.push_back(sql);
      }
    }
    return modifiche;
  }

  TestBench banco;
  BaseDati base;
  ModificaChiesta modifica;
  std::string nota;
  std::vector<std::string> prima;
  std::vector<std::string> dopo; ///< what the command would have made of the database

 private:
  std::vector<std::string> Dopo() {
    MsgAnnulla msg;
    EXPECT_EQ(EseguiModifica(modifica, msg), "") << msg.Errore;
    auto tutto = Tutto(base);
    EXPECT_NE(tutto, prima);
    Ripristina();
    EXPECT_EQ(Tutto(base), prima);
    return tutto;
  }
};

} // namespace lumoscad::test
