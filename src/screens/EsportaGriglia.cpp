#include "screens/EsportaGriglia.hpp"

#include "screens/Griglia.hpp"
#include "screens/ImportoEsatto.hpp"

#include <algorithm>
#include <array>

namespace lumoscad {
namespace {

std::string TraVirgolette(std::string_view testo) {
  const bool semplice = testo.find_first_of(";\"\r\n\t") == std::string_view::npos &&
                        (testo.empty() || (testo.front() != ' ' && testo.back() != ' '));
  if (semplice) {
    return std::string(testo);
  }
  std::string campo = "\"";
  for (const char c : testo) {
    campo.append(c == '"' ? 2 : 1, c);
  }
  return campo + "\"";
}

std::string SuUnaRiga(std::string testo) {
  std::replace_if(
      testo.begin(), testo.end(), [](char c) { return c == '\t' || c == '\r' || c == '\n'; }, ' ');
  return testo;
}

std::string PerHtml(std::string_view testo) {
  std::string html;
  for (const char c : testo) {
    switch (c) {
    case '&':
      html += "&amp;";
      break;
    case '<':
      html += "&lt;";
      break;
    case '>':
      html += "&gt;";
      break;
    case '"':
      html += "&quot;";
      break;
    default:
      html += c;
    }
  }
  return html;
}

} // namespace

std::string SenzaFormula(std::string_view testo) {
  // The last four are the wide forms of the first, which some spreadsheets take for them.
  constexpr std::array<std::string_view, 11> Inizi = {"=", "+", "-", "@", "\t", "\r", "\n", "＝", "＋", "－", "＠"};
  std::string scritto;
  const bool conNul = testo.find('\0') != std::string_view::npos;
  std::copy_if(testo.begin(), testo.end(), std::back_inserter(scritto), [](char c) { return c != '\0'; });
  const std::string_view inizio =
      std::string_view(scritto).substr(std::min(scritto.find_first_not_of(' '), scritto.size()));
  const bool formula =
      std::any_of(Inizi.begin(), Inizi.end(), [&](std::string_view i) { return inizio.starts_with(i); });
  return formula || (conNul && testo.front() == '\0') ? "'" + scritto : scritto;
}

EsportaGriglia::EsportaGriglia(const Griglia& griglia) : griglia_(griglia) {
  const DescrizioneGriglia& d = griglia.Descrizione();
  const auto& colonne = griglia.Description().columns;
  for (std::size_t i = 0; i < colonne.size(); ++i) {
    const auto indice = static_cast<int>(i);
    if (colonne[i].width <= 0) {
      continue;
    }
    Colonna colonna = {indice, colonne[i].headingText, colonne[i].width, colonne[i].kind == ListColumn::Kind::Amount,
                       colonne[i].kind == ListColumn::Kind::Tick};
    if (colonna.spunta) {
      const bool dellaBanca = (indice == d.colonnaSpunta2 ? 1 : 0) == d.banca.spunta;
      colonna.titolo = "Spunta " + (dellaBanca ? std::string("banca") : d.nomeData);
    }
    colonne_.push_back(std::move(colonna));
  }
}

std::vector<std::size_t> EsportaGriglia::Righe() const {
  std::vector<std::size_t> righe = griglia_.Selezione().InVista();
  if (righe.size() < 2) {
    righe.resize(griglia_.Visibili());
    for (std::size_t posto = 0; posto < righe.size(); ++posto) {
      righe[posto] = griglia_.RigaVisibile(posto);
    }
  }
  return righe;
}

std::string EsportaGriglia::Cella(std::size_t riga, const Colonna& colonna) const {
  if (colonna.spunta) {
    const int quale = colonna.indice == griglia_.Descrizione().colonnaSpunta2 ? 1 : 0;
    return griglia_.righe.Spuntata(riga, quale) ? "sì" : "";
  }
  return std::string(griglia_.righe.Testo(riga, colonna.indice));
}

std::string EsportaGriglia::Protetta(std::size_t riga, const Colonna& colonna) const {
  const std::string testo = Cella(riga, colonna);
  return colonna.importo && ImportoEsatto::Leggi(testo) ? testo : SenzaFormula(testo);
}

std::string EsportaGriglia::Csv(const std::vector<std::size_t>& righe) const {
  std::string csv = "\xEF\xBB\xBF";
  const auto aggiungi = [&](const Colonna& colonna, std::string_view testo) {
    csv += TraVirgolette(testo);
    csv += &colonna == &colonne_.back() ? "\r\n" : ";";
  };
  for (const Colonna& colonna : colonne_) {
    aggiungi(colonna, colonna.titolo);
  }
  for (const std::size_t riga : righe) {
    for (const Colonna& colonna : colonne_) {
      aggiungi(colonna, Protetta(riga, colonna));
    }
  }
  return csv;
}

std::string EsportaGriglia::Tabulato(const std::vector<std::size_t>& righe) const {
  std::string testo;
  const auto aggiungi = [&](const Colonna& colonna, std::string cella) {
    testo += SuUnaRiga(std::move(cella));
    testo += &colonna == &colonne_.back() ? '\n' : '\t';
  };
  for (const Colonna& colonna : colonne_) {
    aggiungi(colonna, colonna.titolo);
  }
  for (const std::size_t riga : righe) {
    for (const Colonna& colonna : colonne_) {
      aggiungi(colonna, Protetta(riga, colonna));
    }
  }
  return testo;
}

std::string EsportaGriglia::Html(const std::vector<std::size_t>& righe) const {
  std::string html = "<meta charset=\"utf-8\"><table><tr>";
  for (const Colonna& colonna : colonne_) {
    html += "<th>" + PerHtml(colonna.titolo) + "</th>";
  }
  html += "</tr>";
  for (const std::size_t riga : righe) {
    html += "<tr>";
    for (const Colonna& colonna : colonne_) {
      html += (colonna.importo ? "<td align=\"right\">" : "<td>") + PerHtml(Protetta(riga, colonna)) + "</td>";
    }
    html += "</tr>";
  }
  return html + "</table>";
}

} // namespace lumoscad
