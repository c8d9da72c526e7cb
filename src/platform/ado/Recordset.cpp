#include "platform/ado/Diagnostics.hpp"
#include "platform/ado/RecordsetImpl.hpp"
#include "platform/base/AsciiCase.hpp"

#include <algorithm>
#include <utility>

namespace lumoscad::ado {

namespace {

namespace numbers = detail::numbers;

[[noreturn]] void NotAllowed(const char* why) {
  throw RuntimeError(numbers::InvalidContext, why, "ODBC");
}

} // namespace

void Recordset::Impl::Fill(detail::Outcome outcome, const std::shared_ptr<detail::Session>& from) {
  Clear();
  if (outcome.columns.empty()) {
    return;
  }
  for (auto& column : outcome.columns) {
    comparable.push_back(detail::Comparable(column, from->dialect()));
    names.push_back(std::move(column.name));
  }
  rows = std::move(outcome.rows);
  session = from;
  open = true;
}

void Recordset::Impl::RequireOpen() const {
  if (!open) {
    throw RuntimeError(numbers::ObjectClosed, "Operazione non consentita: l'insieme di righe è chiuso.", "ODBC");
  }
}

void Recordset::Impl::RequireRow() const {
  RequireOpen();
  if (current >= rows.Rows()) {
    throw RuntimeError(numbers::EndOfRows, "Nessuna riga corrente: l'insieme di righe è vuoto o terminato.", "ODBC");
  }
}

void Recordset::Impl::RequireNothingPending() const {
  if (!pending.empty()) {
    NotAllowed("La riga corrente ha modifiche non ancora inviate.");
  }
}

std::size_t Recordset::Impl::Column(std::string_view name) const {
  RequireOpen();
  const auto found =
      std::find_if(names.begin(), names.end(), [&](const auto& each) { return base::SameButForCase(each, name); });
  if (found == names.end()) {
    throw RuntimeError(numbers::NoSuchColumn, "Il risultato non ha la colonna " + std::string(name) + ".", "ODBC");
  }
  return static_cast<std::size_t>(found - names.begin());
}

std::optional<std::string_view> Recordset::Impl::Value(std::size_t index) const {
  RequireRow();
  if (index >= names.size()) {
    throw RuntimeError(numbers::NoSuchColumn, "Il risultato non ha la colonna " + std::to_string(index) + ".", "ODBC");
  }
  if (const auto set = pending.find(index); set != pending.end()) {
    return set->second ? std::optional<std::string_view>(*set->second) : std::nullopt;
  }
  return rows.Cell(current, index);
}

void Recordset::Impl::Clear() {
  *this = Impl();
}

std::optional<std::string_view> Recordset::Field::Value() const {
  return recordset_->ValueAt(position_);
}

void Recordset::Field::SetValue(std::optional<std::string_view> value) {
  Impl& impl = recordset_->impl();
  impl.RequireRow();
  if (!impl.table) {
    NotAllowed("L'insieme di righe è di sola lettura.");
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
  opened.impl().RequireOpen();
  opened.impl().keyColumn = opened.ColumnIndex(tableName.key);
  opened.impl().table = std::move(tableName);
  *this = std::move(opened);
}

State Recordset::State() const noexcept {
  return impl_->open ? ado::State::Open : ado::State::Closed;
}

std::size_t Recordset::RecordCount() const noexcept {
  return impl_->rows.Rows();
}

bool Recordset::Eof() const noexcept {
  return impl_->current >= impl_->rows.Rows();
}

void Recordset::MoveNext() {
  impl_->RequireRow();
  impl_->RequireNothingPending();
  ++impl_->current;
}

Recordset::Field Recordset::Fields(std::string_view columnName) {
  return {*this, impl_->Column(columnName)};
}

std::size_t Recordset::ColumnIndex(std::string_view columnName) const {
  return impl_->Column(columnName);
}

std::size_t Recordset::ColumnCount() const noexcept {
  return impl_->names.size();
}

const std::string& Recordset::ColumnName(std::size_t position) const {
  impl_->RequireOpen();
  if (position >= impl_->names.size()) {
    throw RuntimeError(numbers::NoSuchColumn, "Il risultato non ha la colonna " + std::to_string(position) + ".",
                       "ODBC");
  }
  return impl_->names[position];
}

std::optional<std::string_view> Recordset::ValueAt(std::size_t position) const {
  return impl_->Value(position);
}

void Recordset::ReadRow(std::vector<std::optional<std::string_view>>& values) const {
  impl_->RequireRow();
  impl_->rows.Read(impl_->current, values);
  for (const auto& [position, value] : impl_->pending) {
    values[position] = value ? std::optional<std::string_view>(*value) : std::nullopt;
  }
}

void Recordset::Update() {
  impl_->RequireRow();
  if (!impl_->table) {
    NotAllowed("L'insieme di righe è di sola lettura.");
  }
  if (impl_->pending.empty()) {
    return;
  }
  impl_->SendChanges();
  impl_->TakeChanges();
}

void Recordset::Close() {
  impl_->RequireOpen();
  impl_->Clear();
}

} // namespace lumoscad::ado
