#include "Copione.hpp"

#include "Iniettore.hpp"
#include "common/Testo.hpp"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <thread>

namespace lumoscad::test {
namespace {

std::optional<std::size_t> CercaRiga(const ListWindow& finestra, const std::string& quale) {
  const std::size_t righe = finestra.RowCount();
  if (!quale.starts_with("=")) {
    return righe == 0 ? std::nullopt : std::optional(std::stoul(quale) % righe);
  }
  const int colonne = static_cast<int>(finestra.Description().columns.size());
  for (std::size_t riga = 0; riga < righe; ++riga) {
    for (int colonna = 0; colonna < colonne; ++colonna) {
      if (finestra.CellText(riga, colonna) == std::string_view(quale).substr(1)) {
        return riga;
      }
    }
  }
  return std::nullopt;
}

/// Clicks the cell of the editable column of a kind.
void Clicca(ListWindow& finestra, std::size_t riga, ListColumn::Kind genere) {
  int x = 1;
  const auto fine = std::find_if(finestra.Description().columns.begin(), finestra.Description().columns.end(),
                                 [&](const ListColumn& colonna) { return colonna.kind == genere; });
  if (fine == finestra.Description().columns.end()) {
    throw std::invalid_argument("the list has no such editor");
  }
  for (auto colonna = finestra.Description().columns.begin(); colonna != fine; ++colonna) {
    x += colonna->width;
  }
  finestra.Seleziona(static_cast<std::ptrdiff_t>(riga));
  finestra.LVScadenze_MouseDown(x, 1);
  finestra.LVScadenze_Click(0);
}

void Modifica(ListWindow& finestra, const std::vector<std::string>& gesto) {
  constexpr int TastoInvio = 13;
  const auto riga = CercaRiga(finestra, gesto.at(1));
  if (!riga) {
    return;
  }
  if (gesto[0] == "data") {
    Clicca(finestra, *riga, ListColumn::Kind::DateEditor);
    finestra.TextScad_Change(gesto.at(2));
    finestra.TextScad_KeyPress(TastoInvio);
  } else {
    Clicca(finestra, *riga, ListColumn::Kind::BankEditor);
    finestra.cmbBanche2_Click(std::stoi(gesto.at(2)) % static_cast<int>(finestra.Description().cellBanks.size()));
    finestra.cmbBanche2_LostFocus();
  }
}

/// The person leaves the list open until somebody says to go on.
void Aspetta(const std::string& file) {
  std::ofstream(file + ".qui") << "";
  const auto termine = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!std::filesystem::exists(file)) {
    if (std::chrono::steady_clock::now() > termine) {
      throw std::runtime_error("nobody said to go on");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

} // namespace

void DesktopACopione::ShowBox(std::string_view testo, std::string_view) {
  const SenzaIniezioni mai;
  box.emplace_back(testo);
}

void DesktopACopione::SetPointer(Pointer) {}

void DesktopACopione::RunPendingEvents() {}

void DesktopACopione::ShowList(ListWindow& finestra) {
  for (const std::string& testo : Dividi(gesti, ';')) {
    const auto gesto = Dividi(testo, ':');
    if (gesto[0] == "conferma") {
      finestra.PictureOk_Click();
    } else if (gesto[0] == "annulla") {
      finestra.PictureAnnulla_Click();
    } else if (gesto[0] == "aspetta") {
      Aspetta(gesto.at(1));
    } else if (gesto[0] == "data" || gesto[0] == "banca") {
      Modifica(finestra, gesto);
    }
  }
  if (!finestra.Stato().unloaded) {
    finestra.Form_QueryUnload();
  }
}

void DesktopACopione::ShowSingleItem(SingleItemWindow& finestra) {
  finestra.Elenco().Form_QueryUnload();
}

void DesktopACopione::ShowWait(std::string_view, int, const std::function<void()>& lavoro) {
  lavoro();
}

} // namespace lumoscad::test
