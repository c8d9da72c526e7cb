// The sftp subsystem of a host that means ill. Speaks just enough of the protocol (draft-ietf-secsh-filexfer-02) to be
// let do its harm.
//
//   sftp_ostile MODO [CARTELLA]
//
// fiume      every file is said to be small, and never ends
// annuncio   every file is said to be of 2^62 bytes
// valanga    obeys the file CARTELLA/via once: writes without pause, and makes the file CARTELLA/piena when no more of
//            it is taken
// pacchetto  an answer is announced as one of 1 GiB
// maniglia   an opened file has a handle of 200,000 bytes
// goccia     every file is said to be small, and never ends; each piece of it takes its time
//
// The others write to CARTELLA/log, a line for each, that a file was opened, closed or removed, and do well what is not
// named here:
//
// old-version      speaks version 2 of the protocol
// short-block      gives the file CARTELLA/served, and a short block in the middle of it
// empty-block      gives a block of no bytes
// oversized-block  gives one byte more than was asked for
// stranger         answers a request that nobody made
// refused-read     refuses to read on in the middle of a file, and holds back what was asked for behind it for as long
//                  as requests come; a close among these is an "early close"
// refused-close    the same, and refuses to close the file as well
// nap              makes the file CARTELLA/asked at the first read, and answers a second later
// lost-byte        says of a written file that it is one byte short
// refused-flush    offers to bring a file to its disk, and refuses to

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace {

namespace fs = std::filesystem;

enum class Modo {
  Fiume,
  Annuncio,
  Valanga,
  Pacchetto,
  Maniglia,
  Goccia,
  OldVersion,
  ShortBlock,
  EmptyBlock,
  OversizedBlock,
  Stranger,
  RefusedRead,
  RefusedClose,
  Nap,
  LostByte,
  RefusedFlush
};

enum Tipo : unsigned char {
  Presentazione = 1,
  Versione = 2,
  Apertura = 3,
  Close = 4,
  Lettura = 5,
  Write = 6,
  StatoCollegamento = 7,
  OpenFileState = 8,
  Removal = 13,
  StatoSeguendo = 17,
  Esito = 101,
  Handle = 102,
  Dati = 103,
  Attributi = 105,
  Extension = 200
};

enum StatusCode : unsigned char { Done = 0, EndOfFile = 1, Failure = 4 };

/// Of a block that a server is asked for.
constexpr std::size_t BlockSize = 32768;

std::string Numero(std::uint64_t valore, unsigned larghezza = 4) {
  std::string testo;
  for (unsigned resto = larghezza; resto > 0; --resto) {
    testo += static_cast<char>(valore >> (8U * (resto - 1)) & 0xFFU);
  }
  return testo;
}

std::uint64_t Numero(std::string_view testo) {
  std::uint64_t numero = 0;
  for (const char ottetto : testo) {
    numero = numero << 8U | static_cast<unsigned char>(ottetto);
  }
  return numero;
}

std::string Testo(const std::string& testo) {
  return Numero(testo.size()) + testo;
}

bool Leggi(std::string& dove) {
  for (std::size_t posto = 0; posto < dove.size();) {
    const auto letti = ::read(STDIN_FILENO, dove.data() + posto, dove.size() - posto);
    if (letti <= 0 && !(letti < 0 && errno == EINTR)) {
      return false;
    }
    posto += letti > 0 ? static_cast<std::size_t>(letti) : 0;
  }
  return true;
}

bool Scrivi(std::string_view testo) {
  while (!testo.empty()) {
    const auto scritti = ::write(STDOUT_FILENO, testo.data(), testo.size());
    if (scritti <= 0 && !(scritti < 0 && errno == EINTR)) {
      return false;
    }
    testo.remove_prefix(scritti > 0 ? static_cast<std::size_t>(scritti) : 0);
  }
  return true;
}

/// Type, number of the request, the rest.
std::optional<std::string> LeggiRichiesta() {
  std::string testa(4, '\0');
  if (!Leggi(testa)) {
    return std::nullopt;
  }
  std::string richiesta(Numero(testa), '\0');
  if (richiesta.empty() || !Leggi(richiesta)) {
    return std::nullopt;
  }
  return richiesta;
}

std::string Pacchetto(Tipo tipo, const std::string& corpo) {
  return Testo(static_cast<char>(tipo) + corpo);
}

std::string Status(const std::string& number, StatusCode code, const std::string& reason = {}) {
  return Pacchetto(Esito, number + Numero(code) + Testo(reason) + Testo(""));
}

/// The service that answers in its way; what it has to remember from one request to the next.
class Service {
 public:
  Service(Modo modo, const fs::path& cartella) : modo_(modo), cartella_(cartella) {
    if (!cartella.empty()) {
      log_.open(cartella / "log", std::ios::app);
      std::ifstream served(cartella / "served", std::ios::binary);
      served_.assign(std::istreambuf_iterator<char>(served), {});
    }
  }

  /// The packet, or packets, that answer; nothing while the answer is held back.
  std::string Risposta(const std::string& richiesta) {
    static constexpr std::uint32_t ConDimensione = 1;
    static constexpr std::uint64_t Enorme = std::uint64_t{1} << 62U;
    const auto numero = richiesta.substr(1, 4);
    switch (static_cast<unsigned char>(richiesta[0])) {
    case Presentazione:
      return Pacchetto(Versione, Numero(modo_ == Modo::OldVersion ? 2 : 3) +
                                     (modo_ == Modo::RefusedFlush ? Testo("fsync@openssh.com") + Testo("1") : ""));
    case StatoCollegamento:
    case StatoSeguendo:
      return Pacchetto(Attributi, numero + Numero(ConDimensione) + Numero(modo_ == Modo::Annuncio ? Enorme : 10, 8));
    case OpenFileState:
      return Pacchetto(Attributi,
                       numero + Numero(ConDimensione) + Numero(written_ - (modo_ == Modo::LostByte ? 1 : 0), 8));
    case Apertura:
      Log("open");
      return Pacchetto(Handle, numero + Testo(std::string(modo_ == Modo::Maniglia ? 200000 : 1, 'h')));
    case Lettura:
      return Block(numero, richiesta);
    case Write:
      // Type, number, handle of one letter, place and length stand before the bytes.
      written_ += richiesta.size() - 22;
      return Status(numero, Done);
    case Close:
      Log(held_.empty() ? "close" : "early close");
      return Released() + Status(numero, modo_ == Modo::RefusedClose ? Failure : Done, "handle perduto");
    case Removal:
      Log("remove");
      return Status(numero, Done);
    case Extension:
      return Status(numero, Failure);
    default:
      return Status(numero, Done);
    }
  }

  [[nodiscard]] bool Holds() const { return !held_.empty(); }
  /// What was held back.
  std::string Released() { return std::exchange(held_, {}); }

 private:
  void Log(const char* word) { log_ << word << std::endl; }

  std::string Block(const std::string& number, const std::string& request) {
    const std::string_view end = request;
    const auto place = Numero(end.substr(request.size() - 12, 8));
    const auto length = static_cast<std::size_t>(Numero(end.substr(request.size() - 4)));
    switch (modo_) {
    case Modo::Goccia:
      ::usleep(300000);
      break;
    case Modo::Nap:
      std::ofstream(cartella_ / "asked") << '\n';
      ::sleep(1);
      break;
    case Modo::ShortBlock:
      return ServedBlock(number, place, place == 2 * BlockSize ? 1000 : length);
    case Modo::Stranger:
      return Status(Numero(Numero(number) + 1000), EndOfFile) + Status(number, EndOfFile);
    case Modo::RefusedRead:
    case Modo::RefusedClose:
      // By then the component has asked for many blocks more.
      if (place == 6 * BlockSize) {
        refused_ = true;
        return Status(number, Failure, "disco guasto");
      }
      if (refused_) {
        held_ += Status(number, EndOfFile);
        return {};
      }
      break;
    default:
      break;
    }
    const auto given = length + (modo_ == Modo::OversizedBlock ? 1 : 0);
    return Pacchetto(Dati, number + Testo(std::string(modo_ == Modo::EmptyBlock ? 0 : given, 'x')));
  }

  [[nodiscard]] std::string ServedBlock(const std::string& number, std::uint64_t place, std::size_t length) const {
    return place >= served_.size() ? Status(number, EndOfFile)
                                   : Pacchetto(Dati, number + Testo(served_.substr(place, length)));
  }

  Modo modo_;
  fs::path cartella_;
  std::ofstream log_;
  std::string served_;
  std::string held_;          ///< the answers that are held back
  std::uint64_t written_ = 0; ///< bytes
  bool refused_ = false;      ///< a read was
};

/// Writes for ever; says when what lies between here and the component is full.
[[noreturn]] void Travolgi(const fs::path& cartella) {
  static constexpr int Pausa = 200;
  const std::string nulla(32768, '\0');
  const int modi = ::fcntl(STDOUT_FILENO, F_GETFL);
  ::fcntl(STDOUT_FILENO, F_SETFL, modi | O_NONBLOCK);
  pollfd uscita{STDOUT_FILENO, POLLOUT, 0};
  while (::poll(&uscita, 1, Pausa) > 0 && ::write(STDOUT_FILENO, nulla.data(), nulla.size()) > 0) {
  }
  ::fcntl(STDOUT_FILENO, F_SETFL, modi);
  std::ofstream(cartella / "piena") << '\n';
  while (Scrivi(nulla)) {
  }
  std::_Exit(0);
}

/// Waits for the next request, or for the file that lets the avalanche loose.
void Attendi(const fs::path& cartella) {
  static constexpr int Passo = 10;
  pollfd ingresso{STDIN_FILENO, POLLIN, 0};
  while (::poll(&ingresso, 1, Passo) == 0) {
    if (fs::remove(cartella / "via")) {
      Travolgi(cartella);
    }
  }
}

/// Whether another request comes soon.
bool MoreToCome() {
  static constexpr int Pause = 300;
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return ::poll(&input, 1, Pause) != 0;
}

void Servi(Modo modo, const fs::path& cartella) {
  Service service(modo, cartella);
  for (bool presentato = false;; presentato = true) {
    if (modo == Modo::Valanga) {
      Attendi(cartella);
    }
    if (service.Holds() && !MoreToCome() && !Scrivi(service.Released())) {
      return;
    }
    const auto richiesta = LeggiRichiesta();
    const bool fuoriMisura = modo == Modo::Pacchetto && presentato;
    if (!richiesta || !Scrivi(fuoriMisura ? Numero(std::uint64_t{1} << 30U) : service.Risposta(*richiesta))) {
      return;
    }
  }
}

bool WantsFolder(Modo modo) {
  return modo == Modo::Valanga || modo >= Modo::OldVersion;
}

} // namespace

int main(int numero, char** argomenti) {
  const std::map<std::string, Modo> modi{{"fiume", Modo::Fiume},
                                         {"annuncio", Modo::Annuncio},
                                         {"valanga", Modo::Valanga},
                                         {"pacchetto", Modo::Pacchetto},
                                         {"maniglia", Modo::Maniglia},
                                         {"goccia", Modo::Goccia},
                                         {"old-version", Modo::OldVersion},
                                         {"short-block", Modo::ShortBlock},
                                         {"empty-block", Modo::EmptyBlock},
                                         {"oversized-block", Modo::OversizedBlock},
                                         {"stranger", Modo::Stranger},
                                         {"refused-read", Modo::RefusedRead},
                                         {"refused-close", Modo::RefusedClose},
                                         {"nap", Modo::Nap},
                                         {"lost-byte", Modo::LostByte},
                                         {"refused-flush", Modo::RefusedFlush}};
  const auto modo = numero >= 2 ? modi.find(argomenti[1]) : modi.end();
  if (modo == modi.end() || (numero != 3 && WantsFolder(modo->second))) {
    std::fputs("uso: sftp_ostile MODO [CARTELLA]\n", stderr);
    return 2;
  }
  Servi(modo->second, numero == 3 ? argomenti[2] : "");
  return 0;
}
