#include "entry/Blocchi.hpp"

#include "common/Testo.hpp"
#include "handlers/Blocco.hpp"
#include "platform/ControlCharacters.hpp"
#include "platform/LocalFile.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"

#include <algorithm>
#include <array>
#include <random>

namespace lumoscad {
namespace {

constexpr std::array<std::string_view, 3> Liste = {"CREDITI", "DEBITI", "PRESUNTI"};
/// More than one, so that tests of several terminals do not meet; few, so that each can be looked at.
constexpr unsigned BlocchiDiProva = 10;

std::string DiProva(unsigned numero) {
  return "PROVA" + std::to_string(numero % BlocchiDiProva);
}

bool ListaNota(std::string_view lista) {
  for (unsigned numero = 0; numero < BlocchiDiProva; ++numero) {
    if (lista == DiProva(numero)) {
      return true;
    }
  }
  return std::find(Liste.begin(), Liste.end(), lista) != Liste.end();
}

unsigned ACaso() {
  std::random_device caso;
  return caso();
}

/// A file of the local directory that no command and no other program uses, there from the beginning: what is missing
/// afterwards is missing on the host.
class CopiaLocale {
 public:
  explicit CopiaLocale(std::string_view contenuto = {})
      : percorso_(ActiveServices().environment().CartellaLocale + "/" +
                  ActiveServices().environment().CodicePostazione + ".blocco." + std::to_string(ACaso())) {
    WriteLocalFile(percorso_, contenuto);
  }
  CopiaLocale(const CopiaLocale&) = delete;
  CopiaLocale& operator=(const CopiaLocale&) = delete;
  ~CopiaLocale() {
    try {
      DeleteLocalFile(percorso_);
    } catch (...) { // NOLINT(bugprone-empty-catch): it is private and holds nothing that matters
    }
  }
  [[nodiscard]] const std::string& Percorso() const { return percorso_; }

 private:
  std::string percorso_;
};

/// A line of a lock on a terminal: anybody on the host may have written it.
std::string Mostrabile(std::string_view riga) {
  static constexpr std::size_t Massimo = 200;
  return std::string(Primi(WithoutControls(riga), Massimo));
}

/// Reads a lock into `blocco`, by way of `copia`. Raises error 53 where there is none.
void Leggi(std::string_view host, const CopiaLocale& copia, BloccoLista& blocco) {
  auto& link = ActiveServices().hostLink();
  const std::string remoto = FileDelBlocco(blocco.lista);
  std::string testo;
  // Looked at first: a lock that changes meanwhile is then known as neither the one nor the other.
  const auto stato = link.LookAt(host, remoto);
  link.ReceiveBeginning(host, remoto, copia.Percorso(), MaxRead + 1, testo);
  auto inizio = ReadLocalBeginning(copia.Percorso());
  blocco.impronta =
      std::to_string(stato.writtenAt.value_or(0)) + (inizio.continues ? "+" : "") + "\n" + TestoDelBlocco(inizio.lines);
  const auto righe = RigheDelBlocco(std::move(inizio));
  blocco.preso = MaggioreDiSpazio(righe[0]);
  blocco.chi = Mostrabile(righe[0]);
  blocco.quando = Mostrabile(righe[1]);
}

/// The same; a lock that is not there is one that nobody holds.
BloccoLista Letto(std::string_view host, std::string_view lista) {
  BloccoLista blocco;
  blocco.lista = lista;
  // Made out here: a local directory that is missing must not pass for a lock that is.
  const CopiaLocale copia;
  try {
    Leggi(host, copia, blocco);
  } catch (const RuntimeError& errore) {
    if (errore.Number() != errors::FileNotFound) {
      throw;
    }
  }
  return blocco;
}

/// One test, step after step.
class ProvaDelBlocco {
 public:
  ProvaDelBlocco(std::string_view host, const std::function<void(const PassoProva&)>& mostra)
      : host_(host), mostra_(mostra), righe_(RigheDiChiBlocca()) {}
  ProvaDelBlocco(const ProvaDelBlocco&) = delete;
  ProvaDelBlocco& operator=(const ProvaDelBlocco&) = delete;
  ~ProvaDelBlocco() {
    try {
      if (inviato_) {
        ActiveServices().hostLink().CancellaFile(host_, FileDelBlocco(lista_));
      }
    } catch (...) { // NOLINT(bugprone-empty-catch): what ended the test is what counts
    }
  }

  bool Esegui() {
    const bool preso = Passo("PrendiBlocco", [this] { return Prendi(); });
    Passo("LeggiBlocco", [&] { return preso ? Rileggi() : Salta(); });
    Passo("PermessiBlocco", [&] { return preso ? Permessi() : Salta(); });
    // Also after a failure it may stand there.
    Passo("LasciaBlocco", [this] { return inviato_ ? Lascia() : Salta(); });
    return riuscita_;
  }

 private:
  template <typename Azione> bool Passo(const char* operazione, Azione azione) {
    PassoProva passo{operazione, false, {}};
    try {
      passo.dettaglio = azione();
      passo.riuscito = true;
    } catch (...) {
      passo.dettaglio = CurrentError().Text();
      riuscita_ = false;
    }
    mostra_(passo);
    return passo.riuscito;
  }

  [[noreturn]] static std::string Salta() {
    throw RuntimeError(errors::Driver, "non provato: nessun blocco è stato preso");
  }

  [[nodiscard]] std::string Nome() const { return "«" + FileDelBlocco(lista_) + "»"; }

  std::string Prendi() {
    const unsigned primo = ACaso();
    for (unsigned volta = 0; volta < BlocchiDiProva; ++volta) {
      lista_ = DiProva(primo % BlocchiDiProva + volta);
      if (!Letto(host_, lista_).preso) {
        const CopiaLocale copia(TestoDelBlocco(righe_));
        inviato_ = true;
        ActiveServices().hostLink().InviaFile(host_, copia.Percorso(), FileDelBlocco(lista_));
        return "il blocco " + Nome() + " è sull'host";
      }
    }
    throw RuntimeError(errors::Driver, "I blocchi di prova, da PROVA0 a PROVA9, sono tutti presi: lumoscad --blocchi "
                                       "dice da chi, lumoscad --libera-blocco li toglie.");
  }

  [[nodiscard]] std::string Rileggi() const {
    const auto blocco = Letto(host_, lista_);
    if (blocco.chi != Mostrabile(righe_[0]) || blocco.quando != Mostrabile(righe_[1])) {
      throw RuntimeError(errors::Driver, "Il blocco " + Nome() + " è tornato diverso da come è stato preso.");
    }
    return "il blocco è tornato uguale: " + blocco.chi + ", " + blocco.quando;
  }

  /// Who else may read the lock: whoever cannot, takes the list as free.
  [[nodiscard]] std::string Permessi() const {
    static constexpr unsigned TuttiLeggono = 0004;
    static constexpr unsigned GruppoLegge = 0040;
    static constexpr unsigned TuttiScrivono = 0002;
    const auto permessi = ActiveServices().hostLink().LookAt(host_, FileDelBlocco(lista_)).permissions;
    if (!permessi) {
      return "l'host non dice chi può leggere il blocco";
    }
    const std::string cifre = {static_cast<char>('0' + (*permessi >> 6U) % 8U),
                               static_cast<char>('0' + (*permessi >> 3U) % 8U),
                               static_cast<char>('0' + *permessi % 8U)};
    std::string testo = "permessi " + cifre + ": ";
    if ((*permessi & TuttiLeggono) != 0) {
      testo += "ogni utente dell'host può leggere il blocco";
    } else if ((*permessi & GruppoLegge) != 0) {
      testo += "può leggere il blocco solo il gruppo di chi lo prende; chi accede all'host con un utente di un altro "
               "gruppo crede libera la lista";
    } else {
      testo += "può leggere il blocco solo l'utente che lo prende; chi accede all'host con un altro utente crede "
               "libera la lista";
    }
    return testo + ((*permessi & TuttiScrivono) != 0 ? "; ogni utente può anche scriverlo" : "");
  }

  std::string Lascia() {
    inviato_ = false;
    ActiveServices().hostLink().CancellaFile(host_, FileDelBlocco(lista_));
    const auto blocco = Letto(host_, lista_);
    if (blocco.chi == Mostrabile(righe_[0]) && blocco.preso) {
      throw RuntimeError(errors::Driver, "Il blocco " + Nome() + " è ancora sull'host.");
    }
    return "il blocco non c'è più";
  }

  std::string host_;
  const std::function<void(const PassoProva&)>& mostra_;
  std::vector<std::string> righe_;
  std::string lista_;
  bool inviato_ = false; ///< the lock may stand on the host
  bool riuscita_ = true;
};

} // namespace

BloccoLista GuardaBlocco(std::string_view host, std::string_view lista) {
  BloccoLista blocco;
  blocco.lista = lista;
  if (!ListaNota(lista)) {
    blocco.errore = "Lista sconosciuta: «" + std::string(lista) +
                    "». Sono ammesse CREDITI, DEBITI, PRESUNTI e, di una prova, da PROVA0 a PROVA9.";
    return blocco;
  }
  try {
    return Letto(host, lista);
  } catch (...) {
    blocco.errore = CurrentError().Text();
  }
  return blocco;
}

std::vector<BloccoLista> GuardaBlocchi(std::string_view host) {
  static constexpr int Basta = 2;
  std::vector<BloccoLista> blocchi;
  int falliti = 0;
  for (const auto lista : Liste) {
    if (falliti == Basta) {
      blocchi.emplace_back();
      blocchi.back().lista = lista;
      blocchi.back().errore = "non letto, dopo gli errori di sopra";
    } else {
      blocchi.push_back(GuardaBlocco(host, lista));
      falliti = blocchi.back().errore.empty() ? 0 : falliti + 1;
    }
  }
  for (unsigned numero = 0; numero < BlocchiDiProva && falliti < Basta; ++numero) {
    auto blocco = GuardaBlocco(host, DiProva(numero));
    falliti = blocco.errore.empty() ? 0 : falliti + 1;
    if (blocco.preso || !blocco.errore.empty()) {
      blocchi.push_back(std::move(blocco));
    }
  }
  return blocchi;
}

EsitoBlocco TogliBloccoVisto(std::string_view host, const BloccoLista& visto) {
  const auto adesso = GuardaBlocco(host, visto.lista);
  if (!adesso.errore.empty()) {
    return {false, adesso.errore};
  }
  if (!adesso.preso) {
    return {true, "Il blocco non c'era già più."};
  }
  if (adesso.impronta != visto.impronta) {
    return {false,
            "Il blocco è cambiato nel frattempo e non è stato tolto. Ora: " + adesso.chi + ", " + adesso.quando + "."};
  }
  ActiveServices().hostLink().CancellaFile(host, FileDelBlocco(visto.lista));
  if (Letto(host, visto.lista).impronta == visto.impronta) {
    return {false, "Il blocco " + FileDelBlocco(visto.lista) + " è ancora sull'host."};
  }
  return {true, {}};
}

bool ProvaBlocco(std::string_view host, const std::function<void(const PassoProva&)>& mostra) {
  return ProvaDelBlocco(host, mostra).Esegui();
}

} // namespace lumoscad
