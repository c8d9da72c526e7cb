#include "common/Testo.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/base/AsciiCase.hpp"
#include "platform/base/Utf8.hpp"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace lumoscad {

bool MaggioreDiSpazio(std::string_view testo) noexcept {
  return std::any_of(testo.begin(), testo.end(), [](char c) { return static_cast<unsigned char>(c) > ' '; });
}

bool SenzaValore(std::string_view testo) noexcept {
  return testo.empty() || testo == Nullo;
}

std::string_view SenzaSpaziAiLati(std::string_view testo) noexcept {
  const auto primo = testo.find_first_not_of(' ');
  if (primo == std::string_view::npos) {
    return {};
  }
  return testo.substr(primo, testo.find_last_not_of(' ') - primo + 1);
}

std::string Maiuscolo(std::string_view testo) {
  return base::UpperCase(testo);
}

std::vector<std::string> Dividi(std::string_view testo, char separatore) {
  std::vector<std::string> pezzi;
  for (;;) {
    const auto fine = testo.find(separatore);
    pezzi.emplace_back(testo.substr(0, fine));
    if (fine == std::string_view::npos) {
      return pezzi;
    }
    testo.remove_prefix(fine + 1);
  }
}

std::string_view Primi(std::string_view testo, std::size_t quanti) noexcept {
  std::size_t fine = 0;
  while (fine < testo.size() && (quanti > 0 || !base::BeginsCharacter(testo[fine]))) {
    quanti -= base::BeginsCharacter(testo[fine]) ? 1U : 0U;
    ++fine;
  }
  return testo.substr(0, fine);
}

std::string_view Ultimi(std::string_view testo, std::size_t quanti) noexcept {
  std::size_t inizio = testo.size();
  while (inizio > 0 && quanti > 0) {
    --inizio;
    quanti -= base::BeginsCharacter(testo[inizio]) ? 1U : 0U;
  }
  return testo.substr(inizio);
}

std::string Elenca(std::size_t quanti, std::size_t mostrati, const std::function<std::string(std::size_t)>& testo) {
  std::string elenco;
  for (std::size_t i = 0; i < std::min(quanti, mostrati); ++i) {
    elenco.append(i == 0 ? "" : "; ").append(testo(i));
  }
  if (quanti > mostrati) {
    elenco += "; e altre " + std::to_string(quanti - mostrati);
  }
  return elenco;
}

const std::string& Elemento(const std::vector<std::string>& lista, std::size_t indice) {
  if (indice >= lista.size()) {
    throw RuntimeError(errors::SubscriptOutOfRange, "Indice non incluso nell'intervallo: " + std::to_string(indice));
  }
  return lista[indice];
}

int Intero(std::string_view testo) {
  int valore = 0;
  const char* const fine = testo.data() + testo.size();
  const bool piu = !testo.empty() && testo.front() == '+';
  const char* const inizio = testo.data() + (piu ? 1 : 0);
  const auto [dove, esito] = std::from_chars(inizio, fine, valore);
  if ((piu && testo.substr(1, 1) == "-") || esito != std::errc{} || dove != fine) {
    throw RuntimeError(errors::TypeMismatch, "Numero intero non valido: " + std::string(testo));
  }
  return valore;
}

std::string ConZeri(int valore, int cifre) {
  std::string testo = std::to_string(valore);
  if (static_cast<int>(testo.size()) < cifre) {
    testo.insert(0, static_cast<std::size_t>(cifre) - testo.size(), '0');
  }
  return testo;
}

std::string Migliaia(std::size_t valore) {
  constexpr int Gruppo = 3;
  std::string testo = std::to_string(valore);
  for (int posto = static_cast<int>(testo.size()) - Gruppo; posto > 0; posto -= Gruppo) {
    testo.insert(static_cast<std::size_t>(posto), ".");
  }
  return testo;
}

} // namespace lumoscad
