// What a person is told when there is no memory left to tell it with.

#include "common/Messaggi.hpp"
#include "common/Stato.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>

namespace {
std::atomic<bool> memoriaFinita{false};
std::atomic<long> ancora{-1}; ///< how many requests until it ends; less than 0: it does not
} // namespace

// The process' own: the memory ends when a test says so. Inlined alone, one of them would look mismatched to gcc.
// NOLINTBEGIN(cppcoreguidelines-no-malloc): operator new and delete themselves are made of these
[[gnu::noinline]] void* operator new(std::size_t quanti) {
  if (ancora >= 0 && ancora-- == 0) {
    memoriaFinita = true;
  }
  void* const preso = memoriaFinita ? nullptr : std::malloc(quanti);
  if (preso == nullptr) {
    throw std::bad_alloc();
  }
  return preso;
}
[[gnu::noinline]] void operator delete(void* preso) noexcept {
  std::free(preso);
}
[[gnu::noinline]] void operator delete(void* preso, std::size_t /*quanti*/) noexcept {
  std::free(preso);
}
// NOLINTEND(cppcoreguidelines-no-malloc)

namespace lumoscad {
namespace {

/// A change that the host has accepted, of which the database then fails; with the failure the memory ends.
class WithoutMemory : public testing::Test {
 public:
  WithoutMemory(const WithoutMemory&) = delete;
  WithoutMemory& operator=(const WithoutMemory&) = delete;
  ~WithoutMemory() override { memoriaFinita = false; }

 protected:
  WithoutMemory() = default;

  /// What the standard error has after a command that fails with `errore`.
  template <class Errore> std::string Scritto(Errore errore) {
    ActiveServices().environment = [&errore]() -> const nexaro::Environment& {
      stato().andamento.Comincia("conto 1");
      stato().andamento.Accettata();
      memoriaFinita = true;
      throw Errore(std::move(errore));
    };
    testing::internal::CaptureStderr();
    const std::string risultato = LumoScadenze().EseguiLumoScad("-T SOSPESO /A -C C01 -P 2006 1 -D 01 -H h");
    memoriaFinita = false;
    EXPECT_EQ(risultato, "error");
    EXPECT_THAT(banco_.desktop.box, testing::IsEmpty());
    return testing::internal::GetCapturedStderr();
  }
  /// What is known of that change.
  static std::string Saputo() { return std::string(stato().andamento.Frase()); }

  test::TestBench banco_;
};

TEST_F(WithoutMemory, AFailureIsToldWholeWithItsStatementsItsNoteAndWhatIsKnown) {
  std::string testo = "Istruzioni non eseguite:";
  for (int riga = 0; riga < 500; ++riga) {
    testo += "\nUPDATE scadenze SET banca = 'Società' WHERE conto = " + std::to_string(riga);
  }
  const std::string detto =
      Scritto(RuntimeError(errors::Driver, testo).WithNote("La base dati non risponde più da trenta secondi."));
  ASSERT_THAT(Saputo(), testing::HasSubstr("conto 1"));
  EXPECT_EQ(detto,
            "LumoScad: -2147467259 " + testo + " La base dati non risponde più da trenta secondi. " + Saputo() + "\n");
}

// What is known is asked after the command in each of these: arguments are evaluated in any order.

TEST_F(WithoutMemory, AFailureWithoutANoteHasNoGapInItsPlace) {
  const std::string detto = Scritto(RuntimeError(errors::SubscriptOutOfRange, "Indice"));
  EXPECT_EQ(detto, "LumoScad: 9 Indice " + Saputo() + "\n");
}

TEST_F(WithoutMemory, AForeignFailureKeepsItsText) {
  const std::string diUnaBiblioteca = Scritto(std::runtime_error("biblioteca"));
  EXPECT_EQ(diUnaBiblioteca, "LumoScad: 51 Errore interno: biblioteca " + Saputo() + "\n");
  const std::string diUnNumero = Scritto(7);
  EXPECT_EQ(diUnNumero, "LumoScad: 51 Errore interno " + Saputo() + "\n");
}

TEST_F(WithoutMemory, TheLackOfMemoryItselfIsTold) {
  const std::string detto = Scritto(std::bad_alloc());
  EXPECT_EQ(detto, "LumoScad: 7 Memoria insufficiente " + Saputo() + "\n");
}

const std::vector<std::string> Parametri = {"01", "SOSPESOCREA", "un conto dal codice lungo", "AB   123", ""};

/// The note of a command, from the list to what the database holds; afterwards `nota` is what is read of it.
void UnComando(NotaInCorso& inCorso) {
  inCorso.Comincia("SOSPESO", "/A");
  inCorso.Prepara(Parametri);
  inCorso.Avviata("10.0.0.1", "VB0001", Parametri);
  inCorso.Accettata("Un messaggio del programma che non entra in un testo breve");
  inCorso.BaseDatiChiesta();
  inCorso.ConfermaInviata("1/2/3/un numero di transazione che non entra in un testo breve");
}

TEST(WithoutMemoryFrom, AnyRequestOnTheNoteIsWholeOrNotThere) {
  test::TestBench banco;
  const std::string& cartella = banco.environment.CartellaLocale;
  long scritte = 0;
  long numero = 0;
  for (bool finita = true; finita; ++numero) {
    {
      NotaInCorso inCorso;
      ancora = numero;
      UnComando(inCorso);
      inCorso.Registrata(TransactionOutcome::Unknown);
      finita = memoriaFinita;
      ancora = -1;
      memoriaFinita = false;
    }
    for (const Nota& nota : LeggiNote(cartella)) {
      EXPECT_EQ(nota.errore, "") << numero;
      EXPECT_EQ(nota.fase, FaseNota::Sconosciuta) << numero;
      EXPECT_THAT(nota.transazione, testing::EndsWith("testo breve")) << numero;
      EXPECT_EQ(nota.modifica.parametri.size(), 5U) << numero;
      CancellaNota(cartella, nota.nome);
      ++scritte;
    }
    EXPECT_TRUE(std::filesystem::is_empty(cartella)) << numero;
  }
  EXPECT_GT(numero, 10);
  EXPECT_GE(scritte, 1);
  EXPECT_LT(scritte, numero);
}

TEST(WithoutMemoryFrom, TheStartOnEveryPhaseIsWrittenAllTheSame) {
  test::TestBench banco;
  const std::string& cartella = banco.environment.CartellaLocale;
  NotaInCorso inCorso;
  inCorso.Comincia("SOSPESO", "/A");
  inCorso.Prepara(std::vector<std::string>{"01", "SOSPESOCREA", "C10", "AB   123", ""});
  inCorso.Avviata("10.0.0.1", "VB0001", {"01"});
  const std::string nome = LeggiNote(cartella).at(0).nome;
  const auto senzaMemoria = [&](const std::function<void()>& azione) {
    memoriaFinita = true;
    azione();
    memoriaFinita = false;
    return LeggiNota(cartella, nome);
  };
  const std::string lungo(500, 'x');
  EXPECT_EQ(senzaMemoria([&] { inCorso.Accettata(lungo); }).rispostaHost, lungo);
  EXPECT_EQ(senzaMemoria([&] { inCorso.ConfermaInviata(lungo); }).transazione, lungo);
  const std::vector<std::string> righe = {lungo, lungo, lungo};
  EXPECT_EQ(senzaMemoria([&] {
              inCorso.RigheRimaste(righe);
              inCorso.Registrata(TransactionOutcome::Applied);
            }).fase,
            FaseNota::Applicata);
  EXPECT_THAT(senzaMemoria([&] { inCorso.Registrata(TransactionOutcome::NotApplied); }).fase, FaseNota::NonApplicata);
}

TEST(StandardError, TheMessagesOfTwoThreadsStayApart) {
  const std::string a(3000, 'a');
  const std::string b(3000, 'b');
  constexpr int Giri = 200;
  testing::internal::CaptureStderr();
  std::atomic<int> pronti{0};
  const auto scrivi = [&](const std::string& testo) {
    ++pronti;
    while (pronti < 2) {
    }
    for (int giro = 0; giro < Giri; ++giro) {
      ScriviErrore({testo, "fine"});
    }
  };
  std::thread altro([&] { scrivi(a); });
  scrivi(b);
  altro.join();
  const std::string scritto = testing::internal::GetCapturedStderr();
  int intere = 0;
  for (std::size_t posto = 0; posto < scritto.size();) {
    const std::size_t fine = scritto.find('\n', posto);
    const std::string riga = scritto.substr(posto, fine - posto);
    intere += riga == "LumoScad: " + a + " fine" || riga == "LumoScad: " + b + " fine" ? 1 : 0;
    posto = fine == std::string::npos ? scritto.size() : fine + 1;
  }
  EXPECT_EQ(intere, 2 * Giri);
}

} // namespace
} // namespace lumoscad
