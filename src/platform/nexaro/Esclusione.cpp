#include "platform/nexaro/Nexaro.hpp"

#include "platform/Impronta.hpp"
#include "platform/base/Descriptor.hpp"
#include "platform/base/SystemError.hpp"
#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/Impostazioni.hpp"
#include "platform/nexaro/Testi.hpp"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <thread>

namespace lumoscad::nexaro {
namespace {

using Orologio = std::chrono::steady_clock;

constexpr const char* Dispositivo = "/dev/full";
/// Between two looks at a lock that another process holds.
constexpr std::chrono::milliseconds Intervallo{20};
constexpr const char* NienteInviato = "La richiesta non è stata inviata all'host. Prima di ripetere il comando può "
                                      "essere necessario togliere il blocco della lista "
                                      "sull'host.";

// What a lock on a text is for.
constexpr std::string_view PerIlTurno = "lumoscad turno ";
constexpr std::string_view PerIlProssimo = "lumoscad prossimo ";
constexpr std::string_view PerIlNome = "lumoscad nome ";

struct flock Record(short tipo, std::string_view genere, std::string_view testo) noexcept {
  static_assert(sizeof(off_t) == sizeof(std::uint64_t), "the locks need all of a 64-bit file");
  constexpr std::uint64_t Massimo = 0x3FFFFFFFFFFFFFFFU;
  struct flock blocco {};
  blocco.l_type = tipo;
  blocco.l_whence = SEEK_SET;
  blocco.l_start = static_cast<off_t>(Impronta(testo, Impronta(genere)) & Massimo);
  blocco.l_len = 1;
  return blocco;
}

[[noreturn]] void Impossibile(int errore) {
  throw ErroreRuntime(errori::AccessoAlFile,
                      "Non è possibile escludere le richieste di altri programmi con lo stesso codice di postazione (" +
                          std::string(Dispositivo) + ": " + base::SystemErrorText(errore) + "). " + NienteInviato);
}

/// Whether `descrittore` still is what we opened: a calling program may have closed what it does not know, and its
/// number may be another file's by now.
bool Nostro(const base::Descriptor& descrittore) noexcept {
  struct stat stato {};
  return descrittore.Opened() && ::fstat(descrittore.Number(), &stato) == 0 && S_ISCHR(stato.st_mode) &&
         stato.st_rdev == makedev(1, 7);
}

/// The locks are record locks (fcntl(2), F_SETLK) on bytes of /dev/full, each text's byte being its hash. That device
/// is the one file that every user of a machine may open for writing and none can make, replace or close to others, so
/// that no file of anybody's stands in the way; and nothing else puts locks on it. A record lock belongs to the process
/// and not to the descriptor: a forked child has none, but whoever closes the file in this process, by any descriptor,
/// ends them all.
class SuDispositivo final : public Esclusione {
 public:
  explicit SuDispositivo(std::chrono::milliseconds attesa) : attesa_(attesa) {}

  [[nodiscard]] bool Attendi(const std::string& testo, const std::function<void()>& respiro) override;
  void Lascia() noexcept override;
  [[nodiscard]] bool Riserva(const std::string& nome) override;

 private:
  [[nodiscard]] int Aperto();
  [[nodiscard]] bool Prendi(std::string_view genere, std::string_view testo);
  void Lascia(std::string_view genere, std::string_view testo) noexcept;
  [[noreturn]] void Scaduto(std::string_view testo);

  std::chrono::milliseconds attesa_;
  base::Descriptor dispositivo_;
  std::string tenuto_;    ///< the text that `Attendi` took
  std::string riservato_; ///< the name that `Riserva` took
};

int SuDispositivo::Aperto() {
  if (!Nostro(dispositivo_)) {
    static_cast<void>(dispositivo_.Release());
    const base::Descriptor primo(::open(Dispositivo, O_RDWR | O_CLOEXEC | O_NOCTTY));
    if (!primo.Opened()) {
      Impossibile(errno);
    }
    // Clear of 0 to 2, which a calling program may have closed.
    base::Descriptor alto(::fcntl(primo.Number(), F_DUPFD_CLOEXEC, 3));
    if (!alto.Opened()) {
      Impossibile(errno);
    }
    if (!Nostro(alto)) {
      Impossibile(ENODEV);
    }
    dispositivo_ = std::move(alto);
  }
  return dispositivo_.Number();
}

bool SuDispositivo::Prendi(std::string_view genere, std::string_view testo) {
  auto blocco = Record(F_WRLCK, genere, testo);
  const bool preso = ::fcntl(Aperto(), F_SETLK, &blocco) == 0;
  if (!preso && errno != EAGAIN && errno != EACCES && errno != EINTR) {
    Impossibile(errno);
  }
  return preso;
}

void SuDispositivo::Lascia(std::string_view genere, std::string_view testo) noexcept {
  auto blocco = Record(F_UNLCK, genere, testo);
  if (Nostro(dispositivo_)) {
    ::fcntl(dispositivo_.Number(), F_SETLK, &blocco);
  }
}

bool SuDispositivo::Attendi(const std::string& testo, const std::function<void()>& respiro) {
  const auto termine = Orologio::now() + attesa_;
  std::string tenuto = testo;
  bool atteso = false;
  const auto attendi = [&](std::string_view genere) {
    while (!Prendi(genere, testo)) {
      if (Orologio::now() >= termine) {
        Scaduto(testo);
      }
      atteso = true;
      respiro();
      std::this_thread::sleep_for(Intervallo);
    }
  };
  // Whoever comes next keeps the others behind itself, and so the last holder too.
  attendi(PerIlProssimo);
  try {
    attendi(PerIlTurno);
  } catch (...) {
    Lascia(PerIlProssimo, testo);
    throw;
  }
  Lascia(PerIlProssimo, testo);
  tenuto_ = std::move(tenuto);
  return atteso;
}

void SuDispositivo::Lascia() noexcept {
  Lascia(PerIlTurno, tenuto_);
}

bool SuDispositivo::Riserva(const std::string& nome) {
  if (!Prendi(PerIlNome, nome)) {
    return false;
  }
  if (riservato_ != nome) {
    Lascia(PerIlNome, std::exchange(riservato_, nome));
  }
  return true;
}

void SuDispositivo::Scaduto(std::string_view testo) {
  auto blocco = Record(F_WRLCK, PerIlTurno, testo);
  std::string chi;
  // Of a process in another container the number is not told.
  if (::fcntl(Aperto(), F_GETLK, &blocco) == 0 && blocco.l_type != F_UNLCK && blocco.l_pid > 0) {
    chi = " (processo " + std::to_string(blocco.l_pid) + ")";
  }
  throw ErroreLink("Un altro programma" + chi + " di questa macchina con lo stesso codice di postazione " +
                   Cita(testo) + " sta inviando una richiesta e non ha finito entro " + Secondi(attesa_) + ". " +
                   NienteInviato);
}

} // namespace

std::unique_ptr<Esclusione> CreaEsclusione() {
  return std::make_unique<SuDispositivo>(LeggiAttesa());
}

} // namespace lumoscad::nexaro
