// The sftp subsystem of a host that means ill. Speaks just enough of the protocol (draft-ietf-secsh-filexfer-02) to be
// let do its harm.
//
//   sftp_ostile MODO [CARTELLA]
//
// fiume      every file is said to be small, and never ends
// annuncio   every file is said to be of 2^62 bytes
// valanga    obeys the file CARTELLA/via once: writes without pause, and makes the file CARTELLA/piena when no more of
// it
//            is taken
// pacchetto  an answer is announced as one of 1 GiB
// maniglia   an opened file has a handle of 200,000 bytes
// goccia     every file is said to be small, and never ends; each piece of it takes its time

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

enum class Modo { Fiume, Annuncio, Valanga, Pacchetto, Maniglia, Goccia };

enum Tipo : unsigned char {
  Presentazione = 1,
  Versione = 2,
  Apertura = 3,
  Lettura = 5,
  StatoCollegamento = 7,
  StatoSeguendo = 17,
  Esito = 101,
  Handle = 102,
  Dati = 103,
  Attributi = 105
};

std::string Numero(std::uint64_t valore, unsigned larghezza = 4) {
  std::string testo;
  for (unsigned resto = larghezza; resto > 0; --resto) {
    testo += static_cast<char>(valore >> (8U * (resto - 1)) & 0xFFU);
  }
  return testo;
}

std::uint32_t Numero(std::string_view testo) {
  std::uint32_t numero = 0;
  for (const char ottetto : testo.substr(0, 4)) {
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

std::string Risposta(Modo modo, const std::string& richiesta) {
  static constexpr std::uint32_t ConDimensione = 1;
  static constexpr std::uint64_t Enorme = std::uint64_t{1} << 62U;
  const auto numero = richiesta.substr(1, 4);
  switch (static_cast<unsigned char>(richiesta[0])) {
  case Presentazione:
    return Pacchetto(Versione, Numero(3));
  case StatoCollegamento:
  case StatoSeguendo:
    return Pacchetto(Attributi, numero + Numero(ConDimensione) + Numero(modo == Modo::Annuncio ? Enorme : 10, 8));
  case Apertura:
    return Pacchetto(Handle, numero + Testo(std::string(modo == Modo::Maniglia ? 200000 : 1, 'h')));
  case Lettura:
    if (modo == Modo::Goccia) {
      ::usleep(300000);
    }
    return Pacchetto(
        Dati, numero + Testo(std::string(Numero(std::string_view(richiesta).substr(richiesta.size() - 4)), 'x')));
  default:
    return Pacchetto(Esito, numero + Numero(0) + Testo("") + Testo(""));
  }
}

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

void Servi(Modo modo, const fs::path& cartella) {
  for (bool presentato = false;; presentato = true) {
    if (modo == Modo::Valanga) {
      Attendi(cartella);
    }
    const auto richiesta = LeggiRichiesta();
    const bool fuoriMisura = modo == Modo::Pacchetto && presentato;
    if (!richiesta || !Scrivi(fuoriMisura ? Numero(std::uint64_t{1} << 30U) : Risposta(modo, *richiesta))) {
      return;
    }
  }
}

} // namespace

int main(int numero, char** argomenti) {
  const std::map<std::string, Modo> modi{{"fiume", Modo::Fiume},       {"annuncio", Modo::Annuncio},
                                         {"valanga", Modo::Valanga},   {"pacchetto", Modo::Pacchetto},
                                         {"maniglia", Modo::Maniglia}, {"goccia", Modo::Goccia}};
  const auto modo = numero >= 2 ? modi.find(argomenti[1]) : modi.end();
  if (modo == modi.end() || (modo->second == Modo::Valanga && numero != 3)) {
    std::fputs("uso: sftp_ostile fiume|annuncio|valanga|pacchetto|maniglia|goccia [CARTELLA]\n", stderr);
    return 2;
  }
  Servi(modo->second, numero == 3 ? argomenti[2] : "");
  return 0;
}
