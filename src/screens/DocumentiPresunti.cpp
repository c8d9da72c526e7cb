#include "screens/DocumentiPresunti.hpp"

#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/db2Searches.hpp"
#include "database/moduloDatabase.hpp"
#include "platform/RuntimeError.hpp"
#include "screens/Caricamento.hpp"
#include "screens/DataDiRiga.hpp"

#include <optional>

namespace lumoscad {
namespace {

constexpr std::size_t CifreAnno = 2;
constexpr std::size_t CaratteriSerie = 2;

/// The columns of the list, found once.
class Lettura {
 public:
  explicit Lettura(ado::Recordset& righe)
      : righe_(righe), conto_(righe.ColumnIndex("CODICECONTO")),
        descrizioneConto_(righe.ColumnIndex("DESCRIZIONECONTO")), serie_(righe.ColumnIndex("SERIE")),
        numero_(righe.ColumnIndex("NUMERO")), consegna_(righe.ColumnIndex("DATACONSEGNA")),
        origine_(righe.ColumnIndex("DATACONSEGNAORIGINE")), divisa_(righe.ColumnIndex("DIVISA")),
        importoDivisa_(righe.ColumnIndex("IMPORTODIVISA")), importoEuro_(righe.ColumnIndex("IMPORTOEURO")),
        banca_(righe.ColumnIndex("CODICEBANCA")), descrizioneBanca_(righe.ColumnIndex("BANCADESCRIZIONE")) {}

  [[nodiscard]] std::string_view Serie() const { return Campo(serie_); }
  [[nodiscard]] std::string_view Numero() const { return Campo(numero_); }

  [[nodiscard]] RigaPresunto Riga() const {
    RigaPresunto riga;
    riga.CodiceConto = Campo(conto_);
    riga.DescrizioneConto = Campo(descrizioneConto_);
    riga.documento = righe_.ValueAt(serie_) ? TestoDocumento(Serie(), Numero()) : std::string();
    riga.dataConsegna = Campo(consegna_);
    riga.ConsegnaOrigine = Campo(origine_);
    riga.divisa = Campo(divisa_);
    riga.importoDivisa = Importo(importoDivisa_);
    riga.importoEuro = Importo(importoEuro_);
    riga.codiceBanca = Campo(banca_);
    riga.descrizioneBanca = Campo(descrizioneBanca_);
    return riga;
  }

 private:
  [[nodiscard]] std::string_view Campo(std::size_t colonna) const { return righe_.ValueAt(colonna).value_or(""); }
  [[nodiscard]] std::string Importo(std::size_t colonna) const {
    const std::string_view valore = Campo(colonna);
    return valore.empty() ? std::string() : Utilities::FormattaImporto(valore);
  }

  ado::Recordset& righe_;
  std::size_t conto_;
  std::size_t descrizioneConto_;
  std::size_t serie_;
  std::size_t numero_;
  std::size_t consegna_;
  std::size_t origine_;
  std::size_t divisa_;
  std::size_t importoDivisa_;
  std::size_t importoEuro_;
  std::size_t banca_;
  std::size_t descrizioneBanca_;
};

} // namespace

std::string TestoDocumento(std::string_view serie, std::string_view numero) {
  const std::string_view anno = Ultimi(numero, CifreAnno);
  std::string documento(serie);
  documento.append(numero.substr(0, numero.size() - anno.size())).append("/").append(anno);
  return documento;
}

void LeggiDocumento(std::string_view documento, VariazioneConsegna& variazione) {
  const std::string_view serie = Primi(documento, CaratteriSerie);
  const auto barra = documento.find('/');
  const bool conNumero = barra != std::string_view::npos && barra > serie.size();
  variazione.Serie = SenzaSpaziAiLati(serie);
  variazione.Numero =
      SenzaSpaziAiLati(conNumero ? documento.substr(serie.size(), barra - serie.size()) : std::string_view());
  variazione.Anno = SenzaSpaziAiLati(Ultimi(documento, CifreAnno));
}

void LeggiMovimento(std::string_view tag, VariazioneConsegna& variazione) {
  const auto parti = Dividi(tag, '_');
  if (parti[0] == "MOVIMENTO") {
    variazione.idMovimentoKey = Intero(Elemento(parti, 1));
  }
}

bool CaricaPresunti(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro, MsgAnnulla& msg,
                    const std::function<std::size_t(const RigaPresunto&)>& aggiungi,
                    const std::function<void(std::size_t riga, std::string_view tag)>& movimento) {
  try {
    const auto connection = moduloDatabase::ApriConnessione(moduloDatabase::LeggiParametriDB2(stato().ComandoCorrente));
    const auto azienda = db2Searches::CercaAziendaLinea(*connection, parAzienda, " ", " ");
    auto righe = procedureLumoDB2::ElencoPresunti(*connection, azienda, filtro, msg);
    if (!righe) {
      return true;
    }
    db2Searches::RicercaMovimenti movimenti(*connection, std::to_string(azienda), "N");
    Caricamento caricamento;
    for (const Lettura lettura(*righe); !righe->Eof(); righe->MoveNext()) {
      const RigaPresunto presunto = lettura.Riga();
      RichiediData(presunto.CodiceConto, "DATACONSEGNA", presunto.dataConsegna);
      if (presunto.importoDivisa != "0,00") {
        const std::size_t riga = aggiungi(presunto);
        const auto chiave = movimenti.Cerca(lettura.Serie(), lettura.Numero());
        movimento(riga, "MOVIMENTO_" + std::to_string(chiave));
      }
      if (!caricamento.Avanza()) {
        return false;
      }
    }
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErrore(CurrentError());
  }
  return true;
}

} // namespace lumoscad
