#include "common/Messaggi.hpp"

#include "common/Testo.hpp"
#include "platform/ControlCharacters.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"
#include "platform/base/Utf8.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <new>
#include <utility>

namespace lumoscad {
namespace {

std::string* ascoltato = nullptr; ///< who keeps the last message, if anyone

void Ascolta(std::string_view testo, std::string_view frase) noexcept {
  if (ascoltato == nullptr) {
    return;
  }
  ascoltato->clear();
  try {
    *ascoltato = WithSentence(std::string(testo), frase);
  } catch (...) { // NOLINT(bugprone-empty-catch): the person is told all the same
  }
}

constexpr std::size_t MassimoDelBox = 32U << 10U; // bytes

std::string ConPunti(std::ptrdiff_t numero) {
  std::string cifre = std::to_string(numero);
  for (auto posto = static_cast<std::ptrdiff_t>(cifre.size()) - 3; posto > 0; posto -= 3) {
    cifre.insert(static_cast<std::size_t>(posto), 1, '.');
  }
  return cifre;
}

/// What a box shows of a text: a window lays out a text of a megabyte for minutes.
std::string PerIlBox(std::string_view testo, std::string_view frase) {
  const std::size_t coda = frase.empty() ? 0 : frase.size() + 2;
  if (testo.size() + coda <= MassimoDelBox) {
    return WithSentence(std::string(testo), frase);
  }
  if (coda > MassimoDelBox / 2) { // somebody else's text is in it
    return PerIlBox(WithSentence(std::string(testo), frase), {});
  }
  const std::size_t massimo = MassimoDelBox - coda;
  std::size_t taglio = massimo;
  while (taglio > massimo - 4 && !base::BeginsCharacter(testo[taglio])) {
    --taglio;
  }
  const auto mancano =
      std::count_if(testo.begin() + static_cast<std::ptrdiff_t>(taglio), testo.end(), base::BeginsCharacter);
  std::string mostrato(testo.substr(0, taglio));
  mostrato += mancano == 1 ? "\r\n[... manca un altro carattere]"
                           : "\r\n[... mancano altri " + ConPunti(mancano) + " caratteri]";
  return WithSentence(std::move(mostrato), frase);
}

void Mostra(std::string_view testo, std::string_view frase) {
  ActiveServices().desktop().ShowBox(PerIlBox(testo, frase), NomeProdotto);
}

/// Writes the text of a box that failed, and why it did: the failure in flight.
void ScriviNonMostrato(std::string_view testo, std::string_view frase) noexcept {
  ScriviErrore({testo, frase});
  try {
    const std::string perche = CurrentError().Text();
    if (testo.find(perche) == std::string_view::npos) {
      ScriviErrore({perche});
    }
  } catch (...) { // NOLINT(bugprone-empty-catch): the text itself is told
  }
}

} // namespace

void ScriviErrore(std::initializer_list<std::string_view> pezzi) noexcept {
  // Through a small buffer and without memory of its own: there may be none. A break of a box's line is a blank here,
  // so that a message is one line unless it holds a list; what the host or a server has said gives no orders to a
  // terminal.
  std::array<char, 512> tampone{};
  std::size_t pieno = 0;
  const auto scrivi = [&](char c) {
    if (pieno == tampone.size()) {
      std::fwrite(tampone.data(), 1, std::exchange(pieno, 0), stderr);
    }
    tampone[pieno++] = c;
  };
  const auto scriviPezzo = [&](std::string_view pezzo) {
    for (std::size_t posto = 0; posto < pezzo.size(); ++posto) {
      const std::size_t controllo = ControlLength(pezzo, posto);
      const bool accapo = pezzo.substr(posto, 2) == "\r\n";
      scrivi(controllo > 0 && pezzo[posto] != '\n' ? ' ' : pezzo[posto]);
      posto += controllo == 2 || accapo ? 1 : 0;
    }
  };
  ::flockfile(stderr); // another thread's message must not come in between
  scriviPezzo(NomeProdotto);
  scrivi(':');
  for (const std::string_view pezzo : pezzi) {
    if (!pezzo.empty()) {
      scrivi(' ');
      scriviPezzo(pezzo);
    }
  }
  scrivi('\n');
  std::fwrite(tampone.data(), 1, pieno, stderr);
  ::funlockfile(stderr);
}

AscoltoMessaggi::AscoltoMessaggi(std::string& ultimo) noexcept {
  ascoltato = &ultimo;
}

AscoltoMessaggi::~AscoltoMessaggi() {
  ascoltato = nullptr;
}

void ShowBox(std::string_view testo, std::string_view frase) noexcept {
  Ascolta(testo, frase);
  try {
    Mostra(testo, frase);
  } catch (const std::bad_alloc&) {
    try {
      Mostra(testo, frase); // memory that is short at one moment may be there at the next
    } catch (...) {
      ScriviNonMostrato(testo, frase);
    }
  } catch (...) {
    ScriviNonMostrato(testo, frase);
  }
}

void MostraMessaggio(std::string_view testo, std::string_view dettaglio, std::string_view frase) noexcept {
  if (SenzaSpaziAiLati(dettaglio).empty()) {
    ShowBox(testo, frase);
    return;
  }
  try {
    std::string mostrato(dettaglio);
    ShowBox(mostrato.append("\r\n").append(testo), frase);
  } catch (...) { // no memory for both together
    ShowBox(testo, frase);
  }
}

} // namespace lumoscad
