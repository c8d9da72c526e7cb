#include "platform/ado/Diagnostics.hpp"
#include "platform/ado/RecordsetImpl.hpp"
#include "platform/base/AsciiCase.hpp"

#include <algorithm>
#include <utility>

namespace lumoscad::ado {

namespace {

namespace numeri = interno::numeri;

[[noreturn]] void notAllowed(const char* why) {
  throw ErroreRuntime(numeri::ContestoNonValido, why, "ODBC");
}

} // namespace

void Recordset::Impl::fill(interno::Outcome outcome, const std::shared_ptr<interno::Session>& from) {
  clear();
  if (outcome.columns.empty()) {
    return;
  }
  for (auto& column : outcome.columns) {
    comparable.push_back(interno::comparable(column, from->dialect()));
    names.push_back(std::move(column.name));
  }
  rows = std::move(outcome.rows);
  session = from;
  open = true;
}

void Recordset::Impl::requireOpen() const {
  if (!open) {
    throw ErroreRuntime(numeri::OggettoChiuso, "Operazione non consentita: l'insieme di righe è chiuso.", "ODBC");
  }
}

void Recordset::Impl::requireRow() const {
  requireOpen();
  if (current >= rows.rows()) {
    throw ErroreRuntime(numeri::FineRighe, "Nessuna riga corrente: l'insieme di righe è vuoto o terminato.", "ODBC");
  }
}

void Recordset::Impl::requireNothingPending() const {
  if (!pending.empty()) {
    notAllowed("La riga corrente ha modifiche non ancora inviate.");
  }
}

std::size_t Recordset::Impl::column(std::string_view name) const {
  requireOpen();
  const auto found =
      std::find_if(names.begin(), names.end(), [&](const auto& each) { return base::SameButForCase(each, name); });
  if (found == names.end()) {
    throw ErroreRuntime(numeri::ColonnaInesistente, "Il risultato non ha la colonna " + std::string(name) + ".",
                        "ODBC");
  }
  return static_cast<std::size_t>(found - names.begin());
}

std::optional<std::string_view> Recordset::Impl::value(std::size_t index) const {
  requireRow();
  if (index >= names.size()) {
    throw ErroreRuntime(numeri::ColonnaInesistente, "Il risultato non ha la colonna " + std::to_string(index) + ".",
                        "ODBC");
  }
  if (const auto set = pending.find(index); set != pending.end()) {
    return set->second ? std::optional<std::string_view>(*set->second) : std::nullopt;
  }
  return rows.cell(current, index);
}

void Recordset::Impl::clear() {
  *this = Impl();
}

std::optional<std::string_view> Recordset::Field::Value() const {
  return insieme_->Valore(indice_);
}

void Recordset::Field::SetValue(std::optional<std::string_view> valore) {
  Impl& impl = insieme_->impl();
  impl.requireRow();
  if (!impl.table) {
    notAllowed("L'insieme di righe è di sola lettura.");
  }
  impl.pending[indice_] = valore ? std::optional<std::string>(*valore) : std::nullopt;
}

Recordset::Recordset() : impl_(std::make_unique<Impl>()) {}
Recordset::Recordset(Recordset&&) noexcept = default;
Recordset& Recordset::operator=(Recordset&&) noexcept = default;
Recordset::~Recordset() = default;

void Recordset::Open(Command& comando, CursorType /*tipoCursore*/, LockType /*tipoBlocco*/,
                     TabellaModificabile tabella) {
  if (impl_->open) {
    throw ErroreRuntime(numeri::OggettoAperto, "L'insieme di righe è già aperto.", "ODBC");
  }
  Recordset opened = comando.Execute();
  opened.impl().requireOpen();
  opened.impl().keyColumn = opened.Colonna(tabella.chiave);
  opened.impl().table = std::move(tabella);
  *this = std::move(opened);
}

State Recordset::State() const noexcept {
  return impl_->open ? ado::State::Open : ado::State::Closed;
}

std::size_t Recordset::RecordCount() const noexcept {
  return impl_->rows.rows();
}

bool Recordset::Eof() const noexcept {
  return impl_->current >= impl_->rows.rows();
}

void Recordset::MoveNext() {
  impl_->requireRow();
  impl_->requireNothingPending();
  ++impl_->current;
}

Recordset::Field Recordset::Fields(std::string_view nome) {
  return {*this, impl_->column(nome)};
}

std::size_t Recordset::Colonna(std::string_view nome) const {
  return impl_->column(nome);
}

std::size_t Recordset::Colonne() const noexcept {
  return impl_->names.size();
}

const std::string& Recordset::NomeColonna(std::size_t indice) const {
  impl_->requireOpen();
  if (indice >= impl_->names.size()) {
    throw ErroreRuntime(numeri::ColonnaInesistente, "Il risultato non ha la colonna " + std::to_string(indice) + ".",
                        "ODBC");
  }
  return impl_->names[indice];
}

std::optional<std::string_view> Recordset::Valore(std::size_t indice) const {
  return impl_->value(indice);
}

void Recordset::Update() {
  impl_->requireRow();
  if (!impl_->table) {
    notAllowed("L'insieme di righe è di sola lettura.");
  }
  if (impl_->pending.empty()) {
    return;
  }
  impl_->sendChanges();
  impl_->takeChanges();
}

void Recordset::Close() {
  impl_->requireOpen();
  impl_->clear();
}

} // namespace lumoscad::ado
