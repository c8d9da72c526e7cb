#include "common/ProvaNota.hpp"

#include "common/Nota.hpp"
#include "common/TestoNota.hpp"
#include "platform/DurableFile.hpp"
#include "platform/LocalFile.hpp"
#include "platform/RuntimeError.hpp"

namespace lumoscad {
namespace {

/// Removed whatever happens.
class ProvaInCorso {
 public:
  explicit ProvaInCorso(const PercorsiNota& percorsi) : percorsi_(percorsi) {}
  ProvaInCorso(const ProvaInCorso&) = delete;
  ProvaInCorso& operator=(const ProvaInCorso&) = delete;
  ~ProvaInCorso() { TogliNota(percorsi_); }

 private:
  const PercorsiNota& percorsi_;
};

} // namespace

std::string ProvaNota(const std::string& cartella, const std::string& postazione) {
  const PercorsiNota percorsi(cartella,
                              std::string(InizioNome(postazione)) + "prova-" + std::to_string(ProcessNumber()));
  const ProvaInCorso prova(percorsi);
  std::string testo;
  testoNota::ComponiFase(testo, {}, {});
  // A phase without a note: nobody who lists the notes meanwhile takes it for a command's.
  auto file = HeldFile::Publish(percorsi.fase, percorsi.parte, testo);
  if (!file) {
    throw RuntimeError(errors::FileAccess, "Il posto della nota di prova «" + percorsi.fase + "» è occupato.");
  }
  const bool conBlocchi = HeldBySomebody(percorsi.fase);
  file.reset();
  ReplaceLocalFile(percorsi.fase, percorsi.parte, testo);
  if (ReadLocalFile(percorsi.fase, MaxRead) != testo) {
    throw RuntimeError(errors::FileAccess, "La nota di prova «" + percorsi.fase + "» è tornata diversa.");
  }
  std::string detto = "un comando interrotto lascia una nota in «" + cartella + "»";
  if (InMemory(cartella)) {
    detto += ", che è in memoria: la nota non resta dopo un riavvio";
  }
  if (!conBlocchi) {
    detto += "; la cartella non ha blocchi: non si vede se un comando è ancora in corso";
  }
  return detto;
}

} // namespace lumoscad
