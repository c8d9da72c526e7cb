#pragma once

#include "platform/base/Descriptor.hpp"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace lumoscad::prova {

/// A TCP proxy on loopback that counts what it carries and breaks off, or falls silent, where it is told to. It works
/// on a thread of its own; every operation may be called at any time. One fault is armed at a time, and it strikes all
/// connections once; connections that are made later are carried again.
class ProxyByte {
 public:
  enum class Verso { AlServer, AlCliente };
  enum class Azione {
    Chiudi,   ///< both sides see an orderly end
    Azzera,   ///< both sides see a reset
    Trattieni ///< the connections stay open, but nothing passes any more
  };
  enum class Momento {
    PrimaDelPassaggio, ///< the server never gets the whole sequence
    PrimaDellaRisposta ///< the server got the sequence; nothing that it sent afterwards reaches the client
  };

  /// Carries to the loopback port `destinazione`.
  explicit ProxyByte(int destinazione);
  ProxyByte(const ProxyByte&) = delete;
  ProxyByte& operator=(const ProxyByte&) = delete;
  ~ProxyByte();

  [[nodiscard]] int Porta() const noexcept { return porta_; }
  /// The bytes carried so far, of all connections.
  [[nodiscard]] std::uint64_t Passati(Verso verso) const;
  /// The connections accepted so far.
  [[nodiscard]] int Connessioni() const { return connessioni_; }
  /// The connections that are open on both sides now.
  [[nodiscard]] int Aperte() const { return aperte_; }

  /// Strikes when `quanti` more bytes have passed in a direction: not one more passes.
  void ScattaDopo(Verso verso, std::uint64_t quanti, Azione azione);
  /// Strikes when the client sends `sequenza` for the `volta`-th time, counted from now.
  void ScattaAllaSequenza(std::string_view sequenza, Momento momento, Azione azione, int volta = 1);
  /// Strikes now.
  void Scatta(Azione azione);
  /// From the moment the armed fault strikes on, new connections are refused.
  void RifiutaDopoLoScatto();
  /// Refuses new connections, or takes them again on the same port.
  void Rifiuta(bool rifiuta);
  /// Forgets the fault that is armed and carries again what was held back.
  void Ripristina();
  /// True once the armed fault has struck; waits for it.
  [[nodiscard]] bool Scattato(std::chrono::milliseconds limite = std::chrono::milliseconds(0));

 private:
  /// One direction of a connection.
  struct Tubo {
    std::string attesa;  ///< read, but not written yet
    std::string coda;    ///< the last bytes that passed, fewer than the sequence has
    bool finito = false; ///< the sender has ended
    bool chiuso = false; ///< the receiver was told
  };
  struct Tratto {
    std::array<base::Descriptor, 2> prese; ///< where each direction leads: the server, the client
    std::array<Tubo, 2> tubi;
    bool rotto = false;
    bool rispostaVietata = false; ///< the sequence has passed: the next byte of the server strikes
  };
  struct Guasto {
    Azione azione = Azione::Chiudi;
    std::optional<Verso> verso; ///< counts the bytes of this direction; without it looks for the sequence
    std::uint64_t quanti = 0;
    std::string sequenza;
    Momento momento = Momento::PrimaDelPassaggio;
    int volte = 1;
  };

  /// Runs `lavoro` on the proxy's thread and returns when it is done.
  void NelFilo(std::function<void()> lavoro);
  void Arma(const Guasto& guasto);
  void Lavora();
  void FaiLavori();
  void Attendi();
  void Accetta();
  void Muovi(Tratto& tratto, std::size_t verso);
  void Leggi(Tratto& tratto, std::size_t verso);
  static void Scrivi(Tratto& tratto, std::size_t verso);
  [[nodiscard]] std::size_t Ammessi(Tratto& tratto, std::size_t verso, std::string_view pezzo);
  [[nodiscard]] std::size_t AmmessiSequenza(Tratto& tratto, std::string_view pezzo);
  void Colpisci();
  void TogliFiniti();

  int destinazione_;
  int porta_ = 0;
  base::Descriptor sveglia_;
  std::array<std::atomic<std::uint64_t>, 2> passati_{};
  std::atomic<int> connessioni_{0};
  std::atomic<int> aperte_{0};

  std::mutex chiave_; ///< guards the next three
  std::condition_variable cambiato_;
  std::vector<std::function<void()>> lavori_;
  bool colpito_ = false;

  // Only the proxy's thread touches what follows.
  base::Descriptor ascolto_;
  std::list<Tratto> tratti_;
  std::optional<Guasto> guasto_;
  bool daColpire_ = false;
  bool trattieni_ = false;
  bool rifiutaDopo_ = false;
  bool fine_ = false;
  std::thread filo_;
};

} // namespace lumoscad::prova
