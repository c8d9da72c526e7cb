#include "platform/nexaro/Postazione.hpp"

#include "platform/Impronta.hpp"
#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/Impostazioni.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <unistd.h>

namespace lumoscad::nexaro {
namespace {

std::string NomeMacchina() {
  std::array<char, 256> nome{};
  if (::gethostname(nome.data(), nome.size() - 1) != 0) {
    throw ErroreSistema("Lettura del nome della macchina", errno);
  }
  return nome.data();
}

/// A desktop session has a number of its own (pam_systemd(8)); elsewhere the session of the terminal counts.
std::string Sessione() {
  auto numero = Impostazione("XDG_SESSION_ID");
  return numero.empty() ? "s" + std::to_string(::getsid(0)) : numero;
}

/// The first line of a file of the system, empty where there is none.
std::string Riga(const char* percorso) {
  std::ifstream file(percorso);
  std::string riga;
  std::getline(file, riga);
  return riga;
}

/// As much of a text as a file name can hold everywhere.
std::string Leggibile(std::string testo, std::size_t massimo) {
  testo.resize(std::min(testo.size(), massimo));
  std::replace_if(
      testo.begin(), testo.end(),
      [](char c) {
        return !((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '.' || c == '_' ||
                 c == '-');
      },
      '_');
  return testo;
}

std::string Esadecimale(std::uint32_t valore) {
  std::string cifre(8, '0');
  for (auto cifra = cifre.rbegin(); cifra != cifre.rend(); ++cifra, valore >>= 4U) {
    *cifra = "0123456789abcdef"[valore & 0xFU];
  }
  return cifre;
}

} // namespace

std::string PostazionePredefinita() {
  const auto macchina = NomeMacchina();
  const auto sessione = Sessione();
  auto utente = UtenteCorrente().nome;
  const auto numeroUtente = std::to_string(::geteuid());
  if (utente.empty()) {
    utente = numeroUtente;
  }
  // Names repeat: of machines that were never given one, of users shortened to what a file name takes, of sessions
  // after a restart. What tells them apart is in the hash alone, since a machine's number is not for strangers.
  std::uint64_t impronta = Impronta("lumoscad");
  for (const auto& parte :
       {macchina, Riga("/etc/machine-id"), Riga("/proc/sys/kernel/random/boot_id"), numeroUtente, utente, sessione}) {
    impronta = Impronta("\n", Impronta(parte, impronta));
  }
  const auto ripiegata = static_cast<std::uint32_t>(impronta ^ (impronta >> 32U));
  return Leggibile(macchina, 40) + "-" + Leggibile(utente, 32) + "-" + Leggibile(sessione, 10) + "-" +
         Esadecimale(ripiegata);
}

} // namespace lumoscad::nexaro
