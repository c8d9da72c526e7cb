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
  ultime_[istruzione] = preparazioni_.size();
  preparazioni_.push_back({std::string(testo), 0});
}

void IstruzioniContate::Eseguita(const void* istruzione) {
  if (const auto ultima = ultime_.find(istruzione); ultima != ultime_.end()) {
    ++preparazioni_[ultima->second].esecuzioni;
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

// The parameters have the names of the driver manager's header.

SQLRETURN SQL_API SQLPrepare(SQLHSTMT StatementHandle, SQLCHAR* StatementText, SQLINTEGER TextLength) {
  static auto* const vera = lumoscad::prova::Vera<SQLRETURN(SQLHSTMT, SQLCHAR*, SQLINTEGER)>("SQLPrepare");
  if (lumoscad::prova::ascolto != nullptr && TextLength >= 0) {
    lumoscad::prova::ascolto->Preparata(StatementHandle, {reinterpret_cast<const char*>(StatementText),
                                                          static_cast<std::size_t>(TextLength)}); // NOLINT: bytes
  }
  return vera(StatementHandle, StatementText, TextLength);
}

SQLRETURN SQL_API SQLExecute(SQLHSTMT StatementHandle) {
  static auto* const vera = lumoscad::prova::Vera<SQLRETURN(SQLHSTMT)>("SQLExecute");
  if (lumoscad::prova::ascolto != nullptr) {
    lumoscad::prova::ascolto->Eseguita(StatementHandle);
  }
  return vera(StatementHandle);
}
