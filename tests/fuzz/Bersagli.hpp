#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// What the fuzzer drives. The same functions are replayed over the kept inputs by an ordinary test, so that an input
/// that once found a fault keeps being tried by every build.
namespace lumoscad::fuzz {

using Ingresso = std::span<const std::uint8_t>;

/// Raised by a target whose rule does not hold; leaves the target, which is what the fuzzer calls a crash.
class Smentita final : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// Raises `Smentita` with `regola` unless `vale`.
void Esigi(bool vale, std::string_view regola);

/// From here on no data source has a name in this process: the driver manager refuses every connection.
void TogliLeSorgenti();

/// The bytes as text.
[[nodiscard]] std::string_view Testo(Ingresso ingresso);

/// Part `quale` of a text that `separatore` divides; empty where there are fewer.
[[nodiscard]] std::string_view Parte(std::string_view testo, char separatore, std::size_t quale);

/// Whether the text is UTF-8 without control characters other than tab, carriage return and line feed.
[[nodiscard]] bool TestoPulito(std::string_view testo);

/// The first line is a command, carried out over a recording desktop and host and a database that refuses; the second
/// is the host program's answer, the third the content of every lock, the fourth the number of the host operation
/// that fails.
void Comando(Ingresso ingresso);
/// Every date and amount conversion; the first line is the text, the second another argument where one is wanted.
void Conversioni(Ingresso ingresso);
/// The bytes are a reply; all six reply classes read it.
void Risposta(Ingresso ingresso);
/// The bytes are a connection text.
void Connessione(Ingresso ingresso);
/// Change records of the three request files, fields separated by 0x1F and records by 0x1E, which are sent and read
/// back by the host program's own checks. The first byte chooses the request.
void Richiesta(Ingresso ingresso);
/// What a host's file service answers to an upload, a download or every single operation: the first byte chooses which,
/// and whether each packet is given the number of the request that waits longest; the second is how many bytes arrive
/// at once.
void RisposteSftp(Ingresso ingresso);
/// The bytes are a file of known hosts; the host presents a key, which is then added to it.
void HostNoti(Ingresso ingresso);
/// The bytes after the first are the lock that the host holds; an odd first byte makes it longer than what is read.
void Blocco(Ingresso ingresso);
/// The bytes after the first are a file of a note: its content, its phase, or that it was put aside, as the first byte
/// tells.
void TestoDiNota(Ingresso ingresso);

struct Bersaglio {
  std::string_view nome; ///< the name of its program and of its folders of kept inputs
  void (*prova)(Ingresso);
};

inline constexpr std::array<Bersaglio, 9> Bersagli{{{"comando", Comando},
                                                    {"conversioni", Conversioni},
                                                    {"risposta", Risposta},
                                                    {"connessione", Connessione},
                                                    {"richiesta", Richiesta},
                                                    {"sftp", RisposteSftp},
                                                    {"noti", HostNoti},
                                                    {"blocco", Blocco},
                                                    {"nota", TestoDiNota}}};

} // namespace lumoscad::fuzz
