#pragma once

#include "platform/nexaro/ssh/Canale.hpp"
#include "platform/nexaro/ssh/PacchettoSftp.hpp"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace lumoscad::nexaro {

/// The status codes of the protocol (draft-ietf-secsh-filexfer-02, section 7).
namespace stato_sftp {
inline constexpr std::uint32_t Ok = 0;
inline constexpr std::uint32_t FineFile = 1;
inline constexpr std::uint32_t FileInesistente = 2;
inline constexpr std::uint32_t PermessoNegato = 3;
inline constexpr std::uint32_t Fallimento = 4;
inline constexpr std::uint32_t NonOfferta = 8;
} // namespace stato_sftp

/// How a file is opened (section 6.3).
namespace apertura_sftp {
inline constexpr std::uint32_t Lettura = 0x01;
inline constexpr std::uint32_t Scrittura = 0x02;
inline constexpr std::uint32_t Creazione = 0x08;
inline constexpr std::uint32_t SoloNuovo = 0x20;
} // namespace apertura_sftp

/// An operation that the host refused. Stays inside the link.
class ErroreSftp final : public std::exception {
 public:
  /// `motivo` is Italian and fits behind a colon; the usual one of the code where it is empty.
  ErroreSftp(std::uint32_t codice, std::string_view messaggio, std::string motivo = {});
  [[nodiscard]] std::uint32_t Codice() const noexcept { return codice_; }
  [[nodiscard]] const std::string& Motivo() const noexcept { return motivo_; }
  [[nodiscard]] const char* what() const noexcept override { return motivo_.c_str(); }

 private:
  std::uint32_t codice_;
  std::string motivo_;
};

/// What the host says of a file; nothing for what it does not say.
struct AttributiSftp {
  std::optional<std::uint64_t> dimensione;
  std::optional<std::uint32_t> permessi;

  [[nodiscard]] bool IsCartella() const;
  /// An ordinary file, as far as the host says.
  [[nodiscard]] bool IsOrdinario() const;
};

/// The client of the file transfer protocol on a channel of its own. Requests may be sent ahead of the answers to those
/// before. Every operation raises `ErroreSftp` when the host refuses and `ConnessionePersa` when it does not answer.
class Sftp {
 public:
  /// Starts the service on the host. Raises `RichiestaRifiutata` where there is none.
  explicit Sftp(Sessione& sessione);

  /// While it lives, whatever is asked and answered shares one wait, which begins with it.
  class UnaAttesa {
   public:
    explicit UnaAttesa(Sftp& sftp) : sftp_(sftp) {
      sftp_.inizio_ = Orologio::now();
      sftp_.comune_ = sftp_.canale_.SuaSessione().NuovoTermine();
    }
    UnaAttesa(const UnaAttesa&) = delete;
    UnaAttesa& operator=(const UnaAttesa&) = delete;
    ~UnaAttesa() { sftp_.comune_.reset(); }

   private:
    Sftp& sftp_;
  };

  /// One answer: the type of its packet and what follows the request's number.
  struct Risposta {
    std::uint8_t tipo = 0;
    std::string corpo;
  };

  /// The handle of the opened file. `modo` holds the permissions of a new file before the host's umask.
  [[nodiscard]] std::string Apri(std::string_view percorso, std::uint32_t apertura, std::uint32_t modo);
  void Chiudi(std::string_view handle);
  /// The attributes of what stands at `percorso` (of a symbolic link's target where `segue`); nothing where nothing
  /// stands there.
  [[nodiscard]] std::optional<AttributiSftp> Guarda(std::string_view percorso, bool segue);
  void Cancella(std::string_view percorso);
  /// Puts `nuovo` in the place of whatever has that name, in one step. Where the host cannot do that, a name that is
  /// taken is refused.
  void Rinomina(std::string_view percorso, std::string_view nuovo);
  /// Asks for a sign of life.
  void Saluta();

  // The requests of a transfer, whose answers are fetched later with the returned number.
  [[nodiscard]] std::uint32_t ChiediScrittura(std::string_view handle, std::uint64_t posto, std::string_view dati);
  [[nodiscard]] std::uint32_t ChiediLettura(std::string_view handle, std::uint64_t posto, std::uint32_t lunghezza);
  [[nodiscard]] std::uint32_t ChiediAttributi(std::string_view handle);
  [[nodiscard]] std::uint32_t ChiediChiusura(std::string_view handle);
  /// Nothing where the host does not offer to bring a file to its disk.
  [[nodiscard]] std::optional<std::uint32_t> ChiediScaricoSuDisco(std::string_view handle);

  /// The answers, with the wait beginning anew.
  void AttendiEsito(std::uint32_t numero);
  [[nodiscard]] AttributiSftp AttendiAttributi(std::uint32_t numero);
  /// The data that were read; nothing at the end of the file.
  [[nodiscard]] std::optional<std::string> AttendiDati(std::uint32_t numero);
  /// Fetches every answer that is still due, and forgets it.
  void AttendiTutte();

  [[nodiscard]] Orologio::time_point UltimaRisposta() const { return ultimaRisposta_; }

  /// The free bytes where `percorso` stands; nothing where the host does not tell.
  [[nodiscard]] std::optional<std::uint64_t> SpazioLibero(std::string_view percorso);

 private:
  [[nodiscard]] bool Offre(const std::string& estensione) const { return estensioni_.contains(estensione); }
  [[nodiscard]] std::uint32_t Chiedi(std::uint8_t tipo, const CorpoSftp& corpo, std::string_view dati = {});
  [[nodiscard]] Risposta Attendi(std::uint32_t numero, Termine termine);
  [[nodiscard]] Risposta Attendi(std::uint32_t numero);
  [[nodiscard]] std::optional<Risposta> PrendiPacchetto();
  void Smista();
  void Presentati();

  void Serve(Termine termine);
  [[nodiscard]] Termine ProssimoTermine() const;

  Canale canale_;
  std::optional<Termine> comune_; ///< the end of the wait that everything shares
  Orologio::time_point inizio_;   ///< when that began
  std::size_t letto_ = 0;         ///< how much of the channel's stream was taken apart
  std::uint32_t ultimo_ = 0;
  std::set<std::uint32_t> attese_;             ///< the numbers of the requests without an answer
  std::map<std::uint32_t, Risposta> arrivate_; ///< the answers that nobody has fetched
  std::set<std::string, std::less<>> estensioni_;
  Orologio::time_point ultimaRisposta_;
};

} // namespace lumoscad::nexaro
