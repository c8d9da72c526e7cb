#include "support/IstruzioniContate.hpp"

#include <dlfcn.h>
#include <sql.h>
#include <stdexcept>

namespace lumoscad::prova {
namespace {

IstruzioniContate* ascolto = nullptr;

/// The driver manager's own function behind the one of that name here.
template <typename Funzione> Funzione* Vera(const char* nome) {
  auto* vera = reinterpret_cast<Funzione*>(::dlsym(RTLD_NEXT, nome)); // NOLINT: how the system hands out functions
  if (vera == nullptr) {
    throw std::runtime_error(nome);
  }
  return vera;
}

} // namespace

IstruzioniContate::IstruzioniContate() {
  ascolto = this;
}

IstruzioniContate::~IstruzioniContate() {
  ascolto = nullptr;
}

void IstruzioniContate::Preparata(const void* istruzione, std::string_view testo) {
  preparazioni_.push_back({istruzione, std::string(testo), 0});
}

void IstruzioniContate::Eseguita(const void* istruzione) {
  // The last preparation of a handle is the one that counts: handles come back.
  for (auto preparazione = preparazioni_.rbegin(); preparazione != preparazioni_.rend(); ++preparazione) {
    if (preparazione->istruzione == istruzione) {
      ++preparazione->esecuzioni;
      return;
    }
  }
}

std::size_t IstruzioniContate::Preparate(std::string_view inizio) const {
  std::size_t quante = 0;
  for (const auto& preparazione : preparazioni_) {
    quante += preparazione.testo.starts_with(inizio) ? 1 : 0;
  }
  return quante;
}

std::size_t IstruzioniContate::Eseguite(std::string_view inizio) const {
  std::size_t quante = 0;
  for (const auto& preparazione : preparazioni_) {
    quante += preparazione.testo.starts_with(inizio) ? preparazione.esecuzioni : 0;
  }
  return quante;
}

} // namespace lumoscad::prova

SQLRETURN SQL_API SQLPrepare(SQLHSTMT istruzione, SQLCHAR* testo, SQLINTEGER lunghezza) {
  static auto* const vera = lumoscad::prova::Vera<SQLRETURN(SQLHSTMT, SQLCHAR*, SQLINTEGER)>("SQLPrepare");
  if (lumoscad::prova::ascolto != nullptr && lunghezza >= 0) {
    lumoscad::prova::ascolto->Preparata(
        istruzione, {reinterpret_cast<const char*>(testo), static_cast<std::size_t>(lunghezza)}); // NOLINT: bytes
  }
  return vera(istruzione, testo, lunghezza);
}

SQLRETURN SQL_API SQLExecute(SQLHSTMT istruzione) {
  static auto* const vera = lumoscad::prova::Vera<SQLRETURN(SQLHSTMT)>("SQLExecute");
  if (lumoscad::prova::ascolto != nullptr) {
    lumoscad::prova::ascolto->Eseguita(istruzione);
  }
  return vera(istruzione);
}
