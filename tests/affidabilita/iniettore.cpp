// Loaded into a terminal by the tests: makes one of its calls fail, the n-th after the terminal has said "now".
//
//   LUMOSCAD_INIEZIONE       KIND:N; N = 0 only counts
//   LUMOSCAD_INIEZIONE_FILE  a file of zeros: the page that the terminal, its forks and the test share
//
// Kinds: "disco-prima", an input/output call that is not made and answers an error; "disco-dopo", one that is made and
// answers an error all the same; "disco-sempre", like the first, and so are all calls from then on; "memoria", an
// operator new; "memoria-sempre", and every one from then on. What the process and its forks call counts, not what the
// programs do that these become.

#include "Iniettore.hpp"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <ucontext.h>
#include <unistd.h>

namespace {

using lumoscad::test::FaseIniezione;
using lumoscad::test::PaginaIniezione;

enum class Genere { Nessuno, Prima, Dopo, Sempre, Memoria, MemoriaSempre };

struct Iniettore {
  PaginaIniezione* pagina = nullptr;
  Genere genere = Genere::Nessuno;
  long bersaglio = 0;
  bool attivo = false;
  int sospeso = 0;
};

Iniettore& Il() {
  static Iniettore unico;
  return unico;
}

bool Insiste(Genere genere) {
  return genere == Genere::Sempre || genere == Genere::MemoriaSempre;
}

/// Counts a call and tells whether it is to fail.
bool Tocca(const char* nome) {
  Iniettore& il = Il();
  if (!il.attivo || il.sospeso > 0) {
    return false;
  }
  const long numero = ++il.pagina->chiamate;
  if (il.bersaglio == 0 || numero < il.bersaglio || (numero > il.bersaglio && !Insiste(il.genere))) {
    return false;
  }
  if (il.pagina->scattate++ == 0) {
    std::strncpy(il.pagina->chiamata.data(), nome, il.pagina->chiamata.size() - 1);
  }
  return true;
}

bool DelDisco() {
  return Il().genere == Genere::Prima || Il().genere == Genere::Dopo || Il().genere == Genere::Sempre;
}

/// What becomes of a call of input or output.
enum class Sorte { Passa, NonFatta, Fatta };

Sorte Getta(const char* nome) {
  if (!Il().attivo || !DelDisco() || !Tocca(nome)) {
    return Sorte::Passa;
  }
  return Il().genere == Genere::Dopo ? Sorte::Fatta : Sorte::NonFatta;
}

/// Makes a call, or lets it fail with `codice`; one that cannot be undone by its caller is `soloPrima` never made.
template <typename Risultato, typename Chiamata>
Risultato Prova(const char* nome, int codice, Risultato fallito, bool soloPrima, Chiamata chiamata) {
  const Sorte sorte = Getta(nome);
  if (sorte == Sorte::NonFatta || (sorte == Sorte::Fatta && soloPrima)) {
    errno = codice;
    return fallito;
  }
  const Risultato risultato = chiamata();
  if (sorte == Sorte::Fatta) {
    errno = codice;
    return fallito;
  }
  return risultato;
}

template <typename Funzione> Funzione* Vera(const char* nome) {
  return reinterpret_cast<Funzione*>(::dlsym(RTLD_NEXT, nome));
}

/// Where the process died, for the test to tell its own code from a foreign library's.
void Muore(int segnale, siginfo_t* /*notizie*/, void* contesto) {
  const auto* const dove = static_cast<const ucontext_t*>(contesto);
  Dl_info libreria{};
  // NOLINTNEXTLINE(performance-no-int-to-ptr): a register's value is an address by its use alone
  ::dladdr(reinterpret_cast<void*>(dove->uc_mcontext.gregs[REG_RIP]), &libreria);
  std::snprintf(Il().pagina->morte.data(), Il().pagina->morte.size(), "signal %d in %s %s", segnale,
                libreria.dli_fname == nullptr ? "?" : libreria.dli_fname,
                libreria.dli_sname == nullptr ? "?" : libreria.dli_sname);
  ::_exit(128 + segnale);
}

Genere Leggi(std::string_view nome) {
  return nome == "disco-prima"      ? Genere::Prima
         : nome == "disco-dopo"     ? Genere::Dopo
         : nome == "disco-sempre"   ? Genere::Sempre
         : nome == "memoria"        ? Genere::Memoria
         : nome == "memoria-sempre" ? Genere::MemoriaSempre
                                    : Genere::Nessuno;
}

__attribute__((constructor)) void Prepara() {
  const char* const piano = std::getenv("LUMOSCAD_INIEZIONE");
  const char* const file = std::getenv("LUMOSCAD_INIEZIONE_FILE");
  const char* const numero = piano == nullptr ? nullptr : std::strchr(piano, ':');
  const int pagina = numero == nullptr || file == nullptr ? -1 : ::open(file, O_RDWR | O_CLOEXEC);
  if (pagina < 0) {
    return;
  }
  void* const mappa = ::mmap(nullptr, sizeof(PaginaIniezione), PROT_READ | PROT_WRITE, MAP_SHARED, pagina, 0);
  ::close(pagina);
  if (mappa == MAP_FAILED) {
    return;
  }
  Il().pagina = static_cast<PaginaIniezione*>(mappa);
  Il().genere = Leggi({piano, static_cast<std::size_t>(numero - piano)});
  Il().bersaglio = std::atol(numero + 1);
}

void AscoltaLaMorte() {
  struct sigaction azione {};
  azione.sa_sigaction = Muore;
  azione.sa_flags = static_cast<int>(SA_SIGINFO | SA_RESETHAND);
  for (const int segnale : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL}) {
    ::sigaction(segnale, &azione, nullptr);
  }
}

/// An allocation of C++ that is to fail. Those of C do not: unixODBC dies where it gets no memory.
bool ManchiMemoria() {
  return Il().attivo && !DelDisco() && Tocca("operator new");
}

} // namespace

extern "C" {

void lumoscad_iniezione_fase(FaseIniezione fase) {
  Iniettore& il = Il();
  if (il.pagina == nullptr || il.genere == Genere::Nessuno) {
    return;
  }
  AscoltaLaMorte();
  il.attivo = fase != FaseIniezione::Fine && (il.attivo || DelDisco() == (fase == FaseIniezione::Comando));
}

void lumoscad_iniezione_sospendi(int passo) {
  Il().sospeso += passo;
}

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the C library's names are reserved

int open(const char* nome, int modi, ...) {
  static auto* const Originale = Vera<int(const char*, int, ...)>("open");
  std::va_list resto;
  va_start(resto, modi);
  const auto permessi = va_arg(resto, mode_t);
  va_end(resto);
  return Prova("open", EIO, -1, false, [&] { return Originale(nome, modi, permessi); });
}

int open64(const char* nome, int modi, ...) {
  static auto* const Originale = Vera<int(const char*, int, ...)>("open64");
  std::va_list resto;
  va_start(resto, modi);
  const auto permessi = va_arg(resto, mode_t);
  va_end(resto);
  return Prova("open64", EIO, -1, false, [&] { return Originale(nome, modi, permessi); });
}

int openat(int cartella, const char* nome, int modi, ...) {
  static auto* const Originale = Vera<int(int, const char*, int, ...)>("openat");
  std::va_list resto;
  va_start(resto, modi);
  const auto permessi = va_arg(resto, mode_t);
  va_end(resto);
  return Prova("openat", EIO, -1, false, [&] { return Originale(cartella, nome, modi, permessi); });
}

FILE* fopen(const char* nome, const char* modo) {
  static auto* const Originale = Vera<FILE*(const char*, const char*)>("fopen");
  return Prova<FILE*>("fopen", EIO, nullptr, true, [&] { return Originale(nome, modo); });
}

FILE* fopen64(const char* nome, const char* modo) {
  static auto* const Originale = Vera<FILE*(const char*, const char*)>("fopen64");
  return Prova<FILE*>("fopen64", EIO, nullptr, true, [&] { return Originale(nome, modo); });
}

int fcntl(int file, int ordine, ...) {
  static auto* const Originale = Vera<int(int, int, ...)>("fcntl");
  std::va_list resto;
  va_start(resto, ordine);
  void* const altro = va_arg(resto, void*);
  va_end(resto);
  return Prova("fcntl", EIO, -1, true, [&] { return Originale(file, ordine, altro); });
}

int fcntl64(int file, int ordine, ...) {
  static auto* const Originale = Vera<int(int, int, ...)>("fcntl64");
  std::va_list resto;
  va_start(resto, ordine);
  void* const altro = va_arg(resto, void*);
  va_end(resto);
  return Prova("fcntl64", EIO, -1, true, [&] { return Originale(file, ordine, altro); });
}

// One line a call: result, name, parameters, arguments, error, whether it is never made when it fails.
#define LUMOSCAD_SOSTITUTO(tipo, nome, parametri, argomenti, codice, soloPrima)                                        \
  tipo nome parametri noexcept(noexcept(::nome argomenti)) {                                                           \
    static auto* const vera = Vera<tipo parametri>(#nome);                                                             \
    return Prova<tipo>(#nome, codice, -1, soloPrima, [&] { return vera argomenti; });                                  \
  }

LUMOSCAD_SOSTITUTO(ssize_t, read, (int a, void* b, size_t c), (a, b, c), EIO, false)
LUMOSCAD_SOSTITUTO(ssize_t, pread, (int a, void* b, size_t c, off_t d), (a, b, c, d), EIO, false)
LUMOSCAD_SOSTITUTO(ssize_t, pread64, (int a, void* b, size_t c, off64_t d), (a, b, c, d), EIO, false)
LUMOSCAD_SOSTITUTO(ssize_t, write, (int a, const void* b, size_t c), (a, b, c), EIO, false)
LUMOSCAD_SOSTITUTO(ssize_t, pwrite, (int a, const void* b, size_t c, off_t d), (a, b, c, d), EIO, false)
LUMOSCAD_SOSTITUTO(ssize_t, pwrite64, (int a, const void* b, size_t c, off64_t d), (a, b, c, d), EIO, false)
LUMOSCAD_SOSTITUTO(int, fsync, (int a), (a), EIO, false)
LUMOSCAD_SOSTITUTO(int, fdatasync, (int a), (a), EIO, false)
LUMOSCAD_SOSTITUTO(int, ftruncate, (int a, off_t b), (a, b), EIO, false)
LUMOSCAD_SOSTITUTO(int, ftruncate64, (int a, off64_t b), (a, b), EIO, false)
LUMOSCAD_SOSTITUTO(off_t, lseek, (int a, off_t b, int c), (a, b, c), EIO, false)
LUMOSCAD_SOSTITUTO(off64_t, lseek64, (int a, off64_t b, int c), (a, b, c), EIO, false)
LUMOSCAD_SOSTITUTO(int, rename, (const char* a, const char* b), (a, b), EIO, false)
LUMOSCAD_SOSTITUTO(int, unlink, (const char* a), (a), EIO, false)
LUMOSCAD_SOSTITUTO(int, mkdir, (const char* a, mode_t b), (a, b), EIO, false)
LUMOSCAD_SOSTITUTO(int, access, (const char* a, int b), (a, b), EIO, false)
LUMOSCAD_SOSTITUTO(int, stat, (const char* a, struct stat* b), (a, b), EIO, false)
LUMOSCAD_SOSTITUTO(int, stat64, (const char* a, struct stat64* b), (a, b), EIO, false)
LUMOSCAD_SOSTITUTO(int, lstat, (const char* a, struct stat* b), (a, b), EIO, false)
LUMOSCAD_SOSTITUTO(int, lstat64, (const char* a, struct stat64* b), (a, b), EIO, false)
LUMOSCAD_SOSTITUTO(int, fstat, (int a, struct stat* b), (a, b), EIO, false)
LUMOSCAD_SOSTITUTO(int, fstat64, (int a, struct stat64* b), (a, b), EIO, false)
LUMOSCAD_SOSTITUTO(int, fchmod, (int a, mode_t b), (a, b), EIO, false)
LUMOSCAD_SOSTITUTO(int, chdir, (const char* a), (a), EIO, true)
LUMOSCAD_SOSTITUTO(int, dup2, (int a, int b), (a, b), EIO, true)
LUMOSCAD_SOSTITUTO(int, pipe2, (int* a, int b), (a, b), EMFILE, true)
LUMOSCAD_SOSTITUTO(int, fork, (), (), EAGAIN, true)
LUMOSCAD_SOSTITUTO(int, execve, (const char* a, char* const* b, char* const* c), (a, b, c), EIO, true)
LUMOSCAD_SOSTITUTO(int, poll, (struct pollfd * a, nfds_t b, int c), (a, b, c), ENOMEM, true)

#undef LUMOSCAD_SOSTITUTO

/// A failed close has closed all the same.
int close(int file) {
  static auto* const Originale = Vera<int(int)>("close");
  const Sorte sorte = Getta("close");
  const int esito = Originale(file);
  if (sorte != Sorte::Passa) {
    errno = EIO;
    return -1;
  }
  return esito;
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)
}

// NOLINTBEGIN(cppcoreguidelines-no-malloc): operator new and delete themselves are made of these

namespace {

void* Nuova(std::size_t quanti) noexcept {
  return ManchiMemoria() ? nullptr : std::malloc(quanti == 0 ? 1 : quanti);
}

void* NuovaOErrore(std::size_t quanti) {
  if (void* const memoria = Nuova(quanti)) {
    return memoria;
  }
  throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t quanti) {
  return NuovaOErrore(quanti);
}
void* operator new[](std::size_t quanti) {
  return NuovaOErrore(quanti);
}
void* operator new(std::size_t quanti, const std::nothrow_t& /*unused*/) noexcept {
  return Nuova(quanti);
}
void* operator new[](std::size_t quanti, const std::nothrow_t& /*unused*/) noexcept {
  return Nuova(quanti);
}
void operator delete(void* memoria) noexcept {
  std::free(memoria);
}
void operator delete[](void* memoria) noexcept {
  std::free(memoria);
}
void operator delete(void* memoria, std::size_t /*quanti*/) noexcept {
  std::free(memoria);
}
void operator delete[](void* memoria, std::size_t /*quanti*/) noexcept {
  std::free(memoria);
}

// NOLINTEND(cppcoreguidelines-no-malloc)
