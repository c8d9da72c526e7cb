#include "HostRegistrante.hpp"

#include "Dimostrazione.hpp"
#include "platform/RuntimeError.hpp"

namespace lumoscad::test {
namespace {

/// The parameters, each with its place; equal ones that follow each other share a line.
std::vector<std::string> RigheParametri(const std::vector<std::string>& parametri) {
  std::vector<std::string> righe;
  for (std::size_t da = 0; da < parametri.size();) {
    std::size_t a = da;
    while (a + 1 < parametri.size() && parametri[a + 1] == parametri[da]) {
      ++a;
    }
    righe.push_back("  parametro " + std::to_string(da) + (a == da ? "" : "-" + std::to_string(a)) + " " +
                    Cita(parametri[da]));
    da = a + 1;
  }
  return righe;
}

std::vector<std::string> Pezzi(const std::string& riga) {
  std::vector<std::string> pezzi;
  for (std::size_t inizio = 0; inizio <= riga.size();) {
    const auto fine = std::min(riga.find('\t', inizio), riga.size());
    pezzi.push_back(riga.substr(inizio, fine - inizio));
    inizio = fine + 1;
  }
  return pezzi;
}

std::string Nodo(const xml::Nodo& nodo) {
  std::string testo = nodo.name + (nodo.children.empty() ? " " + Cita(nodo.value) : "(");
  for (std::size_t i = 0; i < nodo.children.size(); ++i) {
    testo += (i == 0 ? "" : ", ") + Nodo(nodo.children[i]);
  }
  return testo + (nodo.children.empty() ? "" : ")");
}

} // namespace

void HostRegistrante::Fai(const std::string& operazione, const std::function<void()>& azione) {
  registro_.Annota("host " + operazione);
  try {
    azione();
  } catch (const RuntimeError& errore) {
    registro_.Annota("  errore " + std::to_string(errore.Number()) + " " + Cita(errore.Description()));
    throw;
  }
}

void HostRegistrante::AnnotaFile(std::string_view percorso) {
  const std::string contenuto = FileText(std::string(percorso));
  for (std::size_t inizio = 0; inizio < contenuto.size();) {
    const auto fine = std::min(contenuto.find('\n', inizio), contenuto.size() - 1) + 1;
    registro_.Annota("  byte " + Cita(contenuto.substr(inizio, fine - inizio)));
    inizio = fine;
  }
}

void HostRegistrante::EseguiProgramma(std::string_view indirizzo, std::string_view programma,
                                      const std::vector<std::string>& parametri, nexaro::XMLParser& destinatario) {
  const auto prima = FileText(registroProgramma_).size();
  nexaro::XMLParser inAscolto;
  inAscolto.Parse = [&](const xml::Nodo& nodo) {
    AnnotaChiamata(prima, parametri);
    registro_.Annota("  risposta " + Nodo(nodo));
    destinatario.Consegna(nodo);
  };
  Fai("EseguiProgramma " + std::string(indirizzo) + " " + std::string(programma), [&] {
    for (auto& riga : RigheParametri(parametri)) {
      registro_.Annota(std::move(riga));
    }
    try {
      vero_->EseguiProgramma(indirizzo, programma, parametri, inAscolto);
    } catch (...) {
      destinatario.started = inAscolto.started;
      throw;
    }
  });
}

/// What the program noted from the byte `prima` of its log on: outcome, text, number of parameters, the parameters,
/// the request file.
void HostRegistrante::AnnotaChiamata(std::size_t prima, const std::vector<std::string>& parametri) {
  const auto nota = FileText(registroProgramma_).substr(prima);
  if (nota.empty()) {
    return;
  }
  const auto pezzi = Pezzi(nota.substr(0, nota.find('\n')));
  registro_.Annota("  il programma: " + pezzi.at(0) + " " + Cita(pezzi.at(1)));
  const std::vector<std::string> avuti(pezzi.begin() + 3, pezzi.end() - 1);
  if (avuti != parametri) {
    registro_.Annota("  il programma ha avuto altri parametri:");
    for (auto& riga : RigheParametri(avuti)) {
      registro_.Annota("  " + riga);
    }
  }
  if (!pezzi.back().empty()) {
    registro_.Annota("  il programma ha letto «" + pezzi.back() + "»");
  }
}

void HostRegistrante::RiceviFile(std::string_view indirizzo, std::string_view remoto, std::string_view locale,
                                 std::string& testo) {
  Fai("RiceviFile " + std::string(indirizzo) + " " + std::string(remoto) + " " + std::string(locale), [&] {
    vero_->RiceviFile(indirizzo, remoto, locale, testo);
    AnnotaFile(locale);
  });
}

void HostRegistrante::InviaFile(std::string_view indirizzo, std::string_view locale, std::string_view remoto) {
  Fai("InviaFile " + std::string(indirizzo) + " " + std::string(locale) + " " + std::string(remoto), [&] {
    AnnotaFile(locale);
    vero_->InviaFile(indirizzo, locale, remoto);
  });
}

void HostRegistrante::RinominaFile(std::string_view indirizzo, std::string_view remoto, std::string_view nuovo,
                                   std::string& testo) {
  Fai("RinominaFile " + std::string(indirizzo) + " " + std::string(remoto) + " " + std::string(nuovo),
      [&] { vero_->RinominaFile(indirizzo, remoto, nuovo, testo); });
}

void HostRegistrante::CancellaFile(std::string_view indirizzo, std::string_view remoto) {
  Fai("CancellaFile " + std::string(indirizzo) + " " + std::string(remoto),
      [&] { vero_->CancellaFile(indirizzo, remoto); });
}

} // namespace lumoscad::test
