#include "GridRows.hpp"

#include <cstdint>
#include <string>

namespace lumoscad::bench {
namespace {

struct Texts {
  std::string account, code, item, key, dueDate, original, bank, importo, instalment, order;
};

std::string Two(std::size_t number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

Texts Line(std::size_t i) {
  const std::uint64_t random = (i + 1) * 0x9E3779B97F4A7C15U >> 20U;
  const std::string giorno = Two(random % 28 + 1);
  const std::string mese = Two(random / 28 % 12 + 1);
  const std::string anno = std::to_string(2005 + random / 336 % 3);
  Texts t;
  t.account = "Cliente numero " + std::to_string(random % 5000) + " S.r.l.";
  t.code = std::to_string(20100000 + random % 5000);
  t.key = std::to_string(random % (i / 2 + 1000));
  t.item = anno + "/" + t.key;
  t.dueDate = giorno + "/" + mese + "/" + anno;
  t.original = random % 12 == 0 ? "" : t.dueDate;
  t.bank = random % 3 == 0 ? "" : "Banca di credito numero " + std::to_string(random % 40);
  t.importo = std::to_string(random % 9800) + "," + Two(random % 97);
  t.instalment = std::to_string(random % 4 + 1);
  t.order = anno + "/" + mese + "/" + giorno;
  return t;
}

} // namespace

std::vector<int> ColumnsWithTag() {
  return {0, 1, 4, 7, 10};
}

void FillGrid(RigheGriglia& rows, std::size_t howMany) {
  for (std::size_t i = 0; i < howMany; ++i) {
    const Texts t = Line(i);
    const std::size_t line = rows.Aggiungi({t.account, t.item, t.dueDate, t.original, t.bank, t.importo, "", t.dueDate,
                                            t.instalment, "", t.bank, t.order});
    rows.ImpostaTag(line, 0, t.code);
    rows.ImpostaTag(line, 1, t.key);
    rows.ImpostaTag(line, 4, t.bank);
  }
}

} // namespace lumoscad::bench
