#include "platform/ado/Diagnostics.hpp"
#include "platform/ado/RecordsetImpl.hpp"
#include "platform/base/AsciiCase.hpp"

#include <algorithm>
#include <utility>

namespace lumoscad::ado {

namespace {

namespace numbers = detail::numbers;

[[noreturn]] void notAllowed(const char* why) {
  throw RuntimeError(numbers::InvalidContext, why, "ODBC");
}

} // namespace

void Recordset::Impl::fill(detail::Outcome outcome, const std::shared_ptr<detail::Session>& from) {
  clear();
  if (outcome.columns.empty()) {
    return;
  }
  for (auto& column : outcome.columns) {
    comparable.push_back(detail::comparable(column, from->dialect()));
    names.push_back(std::move(column.name));
  }
  rows = std::move(outcome.rows);
  session = from;
  open = true;
}

void Recordset::Impl::requireOpen() const {
  if (!open) {
    throw RuntimeError(numbers::ObjectClosed, "Operazione non consentita: l'insieme di righe è chiuso.", "ODBC");
  }
}

void Recordset::Impl::requireRow() const {
  requireOpen();
  if (current >= rows.rows()) {
    throw RuntimeError(numbers::EndOfRows, "Nessuna riga corrente: l'insieme di righe è vuoto o terminato.", "ODBC");
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
    throw RuntimeError(numbers::NoSuchColumn, "Il risultato non ha la colonna " + std::string(name) + ".", "ODBC");
  }
  return static_cast<std::size_t>(found - names.begin());
}

std::optional<std::string_view> Recordset::Impl::value(std::size_t index) const {
  requireRow();
  if (index >= names.size()) {
    throw RuntimeError(numbers::NoSuchColumn, "Il risultato non ha la colonna " + std::to_string(index) + ".", "ODBC");
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
  return recordset_->ValueAt(position_);
}

void Recordset::Field::SetValue(std::optional<std::string_view> value) {
  Impl& impl = recordset_->impl();
  impl.requireRow();
  if (!impl.table) {
    notAllowed("L'insieme di righe è di sola lettura.");
  }
  impl.pending[position_] = value ? std::optional<std::string>(*value) : std::nullopt;
}

Recordset::Recordset() : impl_(std::make_unique<Impl>()) {}
Recordset::Recordset(Recordset&&) noexcept = default;
Recordset& Recordset::operator=(Recordset&&) noexcept = default;
Recordset::~Recordset() = default;

void Recordset::Open(Command& command, CursorType /*cursorType*/, LockType /*lockType*/, EditableTable tableName) {
  if (impl_->open) {
    throw RuntimeError(numbers::ObjectOpen, "L'insieme di righe è già aperto.", "ODBC");
  }
  Recordset opened = command.Execute();
  opened.impl().requireOpen();
  opened.impl().keyColumn = opened.ColumnIndex(tableName.key);
  opened.impl().table = std::move(tableName);
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

Recordset::Field Recordset::Fields(std::string_view columnName) {
  return {*this, impl_->column(columnName)};
}

std::size_t Recordset::ColumnIndex(std::string_view columnName) const {
  return impl_->column(columnName);
}

std::size_t Recordset::ColumnCount() const noexcept {
  return impl_->names.size();
}

const std::string& Recordset::ColumnName(std::size_t position) const {
  impl_->requireOpen();
  if (position >= impl_->names.size()) {
    throw RuntimeError(numbers::NoSuchColumn, "Il risultato non ha la colonna " + std::to_string(position) + ".",
                       "ODBC");
  }
  return impl_->names[position];
}

std::optional<std::string_view> Recordset::ValueAt(std::size_t position) const {
  return impl_->value(position);
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
