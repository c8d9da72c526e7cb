#include "platform/nexaro/ProvaOperazioni.hpp"

#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/RicercaProgramma.hpp"
#include "platform/nexaro/SenzaSigpipe.hpp"
#include "platform/nexaro/Testi.hpp"

#include <array>
#include <exception>
#include <random>
#include <unistd.h>

namespace lumoscad::nexaro {

namespace {

constexpr const char* ProgrammaPredefinito = "VB0001";
/// With line breaks and letters that an encoding could change on the way there and back.
constexpr std::string_view Contenuto = "Prova di LumoScad\r\nperché, così, più\r\n";

std::string LeggiContenuto(const std::string& percorso) {
  const auto operazione = "Lettura del file " + Cita(percorso);
  const auto file = ApriOrdinario(percorso, operazione);
  std::array<char, 4096> tampone{};
  const auto letti = LeggiBlocco(file, tampone, operazione);
  return {tampone.data(), letti};
}

/// One test, step after step.
class Prova {
 public:
  Prova(HostLink& collegamento, std::string host, const Ambiente& ambiente,
        const std::function<void(const EsitoPasso&)>& mostra)
      : collegamento_(collegamento), host_(std::move(host)), mostra_(mostra) {
    std::random_device caso;
    const auto nome = ambiente.CodicePostazione + ".prova." + std::to_string(caso());
    locale_ = ambiente.CartellaLocale + "/" + nome;
    remoto_ = "/tmp/" + nome;
  }
  Prova(const Prova&) = delete;
  Prova& operator=(const Prova&) = delete;
  ~Prova() {
    try {
      if (tentato_ && !cancellato_) {
        static_cast<void>(Cancella());
      }
    } catch (...) { // NOLINT(bugprone-empty-catch): what ended the test is what counts
    }
    ::unlink(locale_.c_str());
  }

  bool Esegui(const std::string& programma) {
    ProvaFile();
    Passo("EseguiProgramma", [&] { return ProvaProgramma(programma); });
    return riuscita_;
  }

 private:
  void ProvaFile() {
    if (Passo("InviaFile", [this] { return Invia(); })) {
      Passo("RiceviFile", [this] { return Ricevi(remoto_); });
      Passo("RinominaFile", [this] {
        std::string testo;
        collegamento_.RinominaFile(host_, remoto_, Completo(), testo);
        return Ricevi(Completo());
      });
    } else {
      Salta("RiceviFile");
      Salta("RinominaFile");
    }
    // Also after a failure a file may stand there.
    if (tentato_) {
      Passo("CancellaFile", [this] { return Cancella(); });
    } else {
      Salta("CancellaFile");
    }
  }

  void Salta(const char* operazione) const { mostra_({operazione, false, "non provato: nessun file è stato inviato"}); }

  template <typename Azione> bool Passo(const char* operazione, Azione azione) {
    EsitoPasso esito{operazione, false, {}};
    try {
      esito.dettaglio = azione();
      esito.riuscito = true;
    } catch (...) {
      esito.dettaglio = ErroreCorrente().Testo();
      riuscita_ = false;
    }
    mostra_(esito);
    return esito.riuscito;
  }

  std::string Invia() {
    const auto operazione = "Scrittura del file " + Cita(locale_);
    FileProvvisorio file(locale_, 0600, operazione);
    file.Scrivi(Contenuto, operazione);
    file.Pubblica(locale_, operazione);
    tentato_ = true;
    collegamento_.InviaFile(host_, locale_, remoto_);
    return "il file " + Cita(remoto_) + " è sull'host";
  }

  std::string Ricevi(const std::string& remoto) {
    std::string testo;
    collegamento_.RiceviFile(host_, remoto, locale_, testo);
    if (LeggiContenuto(locale_) != Contenuto) {
      throw ErroreLink("Il file " + Cita(remoto) + " è tornato diverso da come è stato inviato.");
    }
    return "il file " + Cita(remoto) + " è tornato uguale";
  }

  /// Which of its two names the file has is not known after a failure.
  std::string Cancella() {
    cancellato_ = true;
    std::exception_ptr guasto;
    for (const auto& nome : {remoto_, Completo()}) {
      try {
        Togli(nome);
      } catch (const ErroreRuntime&) {
        guasto = guasto ? guasto : std::current_exception();
      }
    }
    if (guasto) {
      std::rethrow_exception(guasto);
    }
    return "il file non c'è più, né come " + Cita(remoto_) + " né come " + Cita(Completo());
  }

  void Togli(const std::string& remoto) {
    collegamento_.CancellaFile(host_, remoto);
    try {
      static_cast<void>(Ricevi(remoto));
    } catch (const ErroreRuntime& errore) {
      if (errore.Numero() == errori::FileNonTrovato) {
        return;
      }
      throw;
    }
    throw ErroreLink("Il file " + Cita(remoto) + " è ancora sull'host.");
  }

  std::string ProvaProgramma(const std::string& programma) {
    if (!programma.empty()) {
      XMLParser lettore;
      std::string radice;
      lettore.Parse = [&radice](const xml::Nodo& nodo) { radice = nodo.nome; };
      collegamento_.EseguiProgramma(host_, programma, {}, lettore);
      return programma + " ha risposto con l'elemento XML " + Cita(radice);
    }
    auto* ricerca = dynamic_cast<RicercaProgramma*>(&collegamento_);
    if (ricerca == nullptr) {
      throw ErroreLink("Il trasporto non sa cercare un programma senza avviarlo.");
    }
    return Cita(ricerca->CercaProgramma(host_, ProgrammaPredefinito)) + " è pronto e non è stato avviato";
  }

  [[nodiscard]] std::string Completo() const { return remoto_ + ".dos"; }

  HostLink& collegamento_;
  std::string host_;
  const std::function<void(const EsitoPasso&)>& mostra_;
  std::string locale_;
  std::string remoto_;
  bool tentato_ = false;    ///< the file may stand on the host
  bool cancellato_ = false; ///< its removal was tried
  bool riuscita_ = true;
};

} // namespace

bool ProvaOperazioni(HostLink& collegamento, const std::string& host, const std::string& programma,
                     const Ambiente& ambiente, const std::function<void(const EsitoPasso&)>& mostra) {
  // Where nobody reads any more what `mostra` writes, the test still goes to its end, and its file with it.
  const SenzaSigpipe senzaSigpipe;
  return Prova(collegamento, host, ambiente, mostra).Esegui(programma);
}

} // namespace lumoscad::nexaro
