#include "support/ProxyByte.hpp"

#include "support/Loopback.hpp"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <system_error>
#include <utility>

namespace lumoscad::prova {
namespace {

constexpr std::size_t Pezzo = 65536;
constexpr std::size_t AlServer = 0;
constexpr std::size_t AlCliente = 1;

void Prepara(const base::Descriptor& presa) {
  const int si = 1;
  ::setsockopt(presa.Number(), IPPROTO_TCP, TCP_NODELAY, &si, sizeof si);
  ::fcntl(presa.Number(), F_SETFL, ::fcntl(presa.Number(), F_GETFL) | O_NONBLOCK);
}

bool Rimandato(int errore) {
  return errore == EAGAIN || errore == EWOULDBLOCK || errore == EINTR;
}

} // namespace

ProxyByte::ProxyByte(int destinazione)
    : destinazione_(destinazione), sveglia_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), ascolto_(Ascolta()) {
  if (!sveglia_.Opened() || !ascolto_.Opened()) {
    throw std::system_error(errno, std::generic_category(), "proxy");
  }
  porta_ = PortaDi(ascolto_);
  filo_ = std::thread([this] { Lavora(); });
}

ProxyByte::~ProxyByte() {
  NelFilo([this] { fine_ = true; });
  filo_.join();
}

std::uint64_t ProxyByte::Passati(Verso verso) const {
  return passati_[static_cast<std::size_t>(verso)];
}

void ProxyByte::ScattaDopo(Verso verso, std::uint64_t quanti, Azione azione) {
  Guasto guasto;
  guasto.azione = azione;
  guasto.verso = verso;
  guasto.quanti = quanti;
  Arma(guasto);
}

void ProxyByte::ScattaAllaSequenza(std::string_view sequenza, Momento momento, Azione azione, int volta) {
  Guasto guasto;
  guasto.azione = azione;
  guasto.sequenza = sequenza;
  guasto.momento = momento;
  guasto.volte = volta;
  Arma(guasto);
}

void ProxyByte::Scatta(Azione azione) {
  ScattaDopo(Verso::AlServer, 0, azione);
}

void ProxyByte::RifiutaDopoLoScatto() {
  NelFilo([this] { rifiutaDopo_ = true; });
}

void ProxyByte::Rifiuta(bool rifiuta) {
  NelFilo([this, rifiuta] {
    if (rifiuta) {
      ascolto_.Close();
    } else if (!ascolto_.Opened()) {
      ascolto_ = Ascolta(porta_);
    }
  });
}

void ProxyByte::Ripristina() {
  NelFilo([this] {
    guasto_.reset();
    trattieni_ = false;
    rifiutaDopo_ = false;
  });
}

bool ProxyByte::Scattato(std::chrono::milliseconds limite) {
  std::unique_lock blocco(chiave_);
  return cambiato_.wait_for(blocco, limite, [this] { return colpito_; });
}

void ProxyByte::NelFilo(std::function<void()> lavoro) {
  bool fatto = false;
  std::unique_lock blocco(chiave_);
  lavori_.emplace_back([&fatto, lavoro = std::move(lavoro)] {
    lavoro();
    fatto = true;
  });
  ::eventfd_write(sveglia_.Number(), 1);
  cambiato_.wait(blocco, [&fatto] { return fatto; });
}

void ProxyByte::Arma(const Guasto& guasto) {
  NelFilo([this, &guasto] {
    guasto_ = guasto;
    colpito_ = false;
    for (auto& tratto : tratti_) {
      tratto.tubi[AlServer].coda.clear();
      tratto.rispostaVietata = false;
    }
    if (guasto.verso && guasto.quanti == 0) {
      Colpisci();
    }
  });
}

void ProxyByte::Lavora() {
  while (!fine_) {
    Attendi();
    // What the server had sent before a request is carried before that request.
    for (const std::size_t verso : {AlCliente, AlServer}) {
      for (auto& tratto : tratti_) {
        Muovi(tratto, verso);
        if (daColpire_) {
          break;
        }
      }
      if (daColpire_) {
        break;
      }
    }
    {
      const std::lock_guard blocco(chiave_);
      if (std::exchange(daColpire_, false)) {
        Colpisci();
      }
      FaiLavori();
    }
    TogliFiniti();
  }
}

void ProxyByte::FaiLavori() {
  for (const auto& lavoro : std::exchange(lavori_, {})) {
    lavoro();
  }
  cambiato_.notify_all();
}

void ProxyByte::Attendi() {
  std::vector<pollfd> voci{{sveglia_.Number(), POLLIN, 0}, {ascolto_.Number(), POLLIN, 0}};
  if (!trattieni_) {
    for (const auto& tratto : tratti_) {
      for (const std::size_t verso : {AlServer, AlCliente}) {
        const bool scrive = !tratto.tubi[verso].attesa.empty();
        const bool legge = tratto.tubi[1 - verso].attesa.empty() && !tratto.tubi[1 - verso].finito;
        const auto eventi = static_cast<short>((scrive ? POLLOUT : 0) | (legge ? POLLIN : 0));
        // A negative number is passed over: a socket that has ended would wake the loop for ever.
        voci.push_back({eventi != 0 ? tratto.prese[verso].Number() : -1, eventi, 0});
      }
    }
  }
  ::poll(voci.data(), voci.size(), -1);
  eventfd_t ignorato = 0;
  ::eventfd_read(sveglia_.Number(), &ignorato);
  if ((voci[1].revents & POLLIN) != 0) {
    Accetta();
  }
}

void ProxyByte::Accetta() {
  base::Descriptor cliente(::accept4(ascolto_.Number(), nullptr, nullptr, SOCK_CLOEXEC));
  if (!cliente.Opened()) {
    return;
  }
  ++connessioni_;
  auto server = Collega(destinazione_);
  if (!server.Opened()) {
    return;
  }
  Prepara(cliente);
  Prepara(server);
  tratti_.emplace_back();
  tratti_.back().prese[AlServer] = std::move(server);
  tratti_.back().prese[AlCliente] = std::move(cliente);
  ++aperte_;
}

void ProxyByte::Muovi(Tratto& tratto, std::size_t verso) {
  if (trattieni_ || tratto.rotto) {
    return;
  }
  if (tratto.tubi[verso].attesa.empty() && !tratto.tubi[verso].finito) {
    Leggi(tratto, verso);
  }
  if (!tratto.rotto) {
    Scrivi(tratto, verso);
  }
}

void ProxyByte::Leggi(Tratto& tratto, std::size_t verso) {
  std::array<char, Pezzo> dati{};
  const auto letti = ::recv(tratto.prese[1 - verso].Number(), dati.data(), dati.size(), 0);
  if (letti < 0) {
    tratto.rotto = !Rimandato(errno);
  } else if (letti == 0) {
    tratto.tubi[verso].finito = true;
  } else {
    const std::string_view pezzo(dati.data(), static_cast<std::size_t>(letti));
    const auto ammessi = Ammessi(tratto, verso, pezzo);
    tratto.tubi[verso].attesa = pezzo.substr(0, ammessi);
    passati_[verso] += ammessi;
  }
}

void ProxyByte::Scrivi(Tratto& tratto, std::size_t verso) {
  auto& tubo = tratto.tubi[verso];
  const int presa = tratto.prese[verso].Number();
  if (!tubo.attesa.empty()) {
    const auto scritti = ::send(presa, tubo.attesa.data(), tubo.attesa.size(), MSG_NOSIGNAL);
    if (scritti < 0) {
      tratto.rotto = !Rimandato(errno);
      return;
    }
    tubo.attesa.erase(0, static_cast<std::size_t>(scritti));
  }
  if (tubo.attesa.empty() && tubo.finito && !tubo.chiuso) {
    ::shutdown(presa, SHUT_WR);
    tubo.chiuso = true;
  }
}

std::size_t ProxyByte::Ammessi(Tratto& tratto, std::size_t verso, std::string_view pezzo) {
  if (verso == AlCliente && tratto.rispostaVietata) {
    daColpire_ = true;
    return 0;
  }
  if (!guasto_) {
    return pezzo.size();
  }
  if (!guasto_->verso) {
    return verso == AlServer ? AmmessiSequenza(tratto, pezzo) : pezzo.size();
  }
  if (static_cast<std::size_t>(*guasto_->verso) != verso) {
    return pezzo.size();
  }
  const auto ammessi = std::min<std::uint64_t>(pezzo.size(), guasto_->quanti);
  guasto_->quanti -= ammessi;
  daColpire_ = guasto_->quanti == 0;
  return static_cast<std::size_t>(ammessi);
}

std::size_t ProxyByte::AmmessiSequenza(Tratto& tratto, std::string_view pezzo) {
  auto& coda = tratto.tubi[AlServer].coda;
  const auto vecchi = coda.size();
  const std::string testo = coda + std::string(pezzo);
  for (auto posto = testo.find(guasto_->sequenza); posto != std::string::npos && guasto_->volte > 0;
       posto = testo.find(guasto_->sequenza, posto + 1)) {
    if (--guasto_->volte > 0) {
      continue;
    }
    if (guasto_->momento == Momento::PrimaDelPassaggio) {
      daColpire_ = true;
      return posto > vecchi ? posto - vecchi : 0;
    }
    tratto.rispostaVietata = true;
  }
  coda = testo.substr(testo.size() - std::min(testo.size(), guasto_->sequenza.size() - 1));
  return pezzo.size();
}

void ProxyByte::Colpisci() {
  const auto azione = guasto_->azione;
  guasto_.reset();
  colpito_ = true;
  if (std::exchange(rifiutaDopo_, false)) {
    ascolto_.Close();
  }
  for (auto& tratto : tratti_) {
    tratto.rispostaVietata = false;
  }
  if (azione == Azione::Trattieni) {
    trattieni_ = true;
    return;
  }
  if (azione == Azione::Azzera) {
    const linger subito{1, 0};
    for (const auto& tratto : tratti_) {
      for (const auto& presa : tratto.prese) {
        ::setsockopt(presa.Number(), SOL_SOCKET, SO_LINGER, &subito, sizeof subito);
      }
    }
  }
  tratti_.clear();
  aperte_ = 0;
}

void ProxyByte::TogliFiniti() {
  tratti_.remove_if([this](const Tratto& tratto) {
    const bool finito = tratto.rotto || (tratto.tubi[AlServer].chiuso && tratto.tubi[AlCliente].chiuso);
    aperte_ -= finito ? 1 : 0;
    return finito;
  });
}

} // namespace lumoscad::prova
