#pragma once

#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad::test {

/// `testo` between «», its control characters escaped, so that it takes one line.
[[nodiscard]] std::string Cita(std::string_view testo);

/// A short digest of a text, the same with every compiler.
[[nodiscard]] std::string Impronta(std::string_view testo);

/// What one play did, in the order in which it happened; what the database layer asked on its own account is kept
/// apart. Workstation, times and whatever differs from run to run are masked when the play is closed.
class Registro {
 public:
  /// Writes `segno` for `testo` from now on, wherever it stands.
  void Maschera(std::string testo, std::string segno);
  void Annota(std::string riga) { righe_.push_back(std::move(riga)); }
  /// Notes lines that say at length what is often the same: in full once, by their first line after that.
  void AnnotaUnaVolta(const std::vector<std::string>& righe);
  void AnnotaStrato(std::string riga) { strato_.push_back(std::move(riga)); }
  /// The play's text under its title; the next one begins empty and without masks.
  [[nodiscard]] std::string Chiudi(std::string_view titolo);

 private:
  [[nodiscard]] std::string Mascherato(std::string testo) const;

  std::vector<std::string> righe_;
  std::vector<std::string> strato_;
  std::vector<std::pair<std::string, std::string>> maschere_;
  std::set<std::vector<std::string>> scritte_;
};

} // namespace lumoscad::test
