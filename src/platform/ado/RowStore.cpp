#include "platform/ado/RowStore.hpp"

#include "platform/RuntimeError.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

namespace lumoscad::ado::detail {

namespace {

constexpr std::size_t StoreBlockBytes = std::size_t{1} << 20;
constexpr std::uint32_t NullFlag = 0x80000000U;

} // namespace

void RowStore::Append(const std::vector<std::optional<std::string_view>>& cells) {
  rows_.push_back(Pack(cells));
}

void RowStore::Replace(std::size_t row, const std::vector<std::optional<std::string_view>>& cells) {
  rows_[row] = Pack(cells);
}

std::optional<std::string_view> RowStore::Cell(std::size_t row, std::size_t column) const noexcept {
  const std::byte* packed = rows_[row];
  std::uint32_t end = 0;
  std::memcpy(&end, packed + column * sizeof end, sizeof end);
  if ((end & NullFlag) != 0) {
    return std::nullopt;
  }
  std::uint32_t start = 0;
  if (column > 0) {
    std::memcpy(&start, packed + (column - 1) * sizeof start, sizeof start);
  }
  start &= ~NullFlag;
  const auto* text = reinterpret_cast<const char*>(packed + columns_ * sizeof end);
  return std::string_view(text + start, end - start);
}

void RowStore::Clear() {
  *this = RowStore(columns_);
}

std::byte* RowStore::Pack(const std::vector<std::optional<std::string_view>>& cells) {
  std::size_t bytes = 0;
  for (const auto& cell : cells) {
    bytes += cell ? cell->size() : 0;
  }
  if (bytes >= NullFlag) {
    throw RuntimeError(errors::OutOfMemory, "Una riga della base dati supera i 2 GiB.", "ODBC");
  }
  std::byte* const packed = Allocate(columns_ * sizeof(std::uint32_t) + bytes);
  std::byte* ends = packed;
  std::byte* const text = packed + columns_ * sizeof(std::uint32_t);
  std::uint32_t at = 0;
  for (const auto& cell : cells) {
    if (cell && !cell->empty()) {
      std::memcpy(text + at, cell->data(), cell->size());
      at += static_cast<std::uint32_t>(cell->size());
    }
    const std::uint32_t end = cell ? at : at | NullFlag;
    std::memcpy(ends, &end, sizeof end);
    ends += sizeof end;
  }
  return packed;
}

std::byte* RowStore::Allocate(std::size_t bytes) {
  if (bytes > freeBytes_) {
    // A small result should not hold a whole block: blocks grow with what is stored.
    const std::size_t wanted = std::min(StoreBlockBytes, std::size_t{4096} << std::min<std::size_t>(blocks_.size(), 8));
    freeBytes_ = std::max(bytes, wanted);
    blocks_.push_back(std::make_unique_for_overwrite<std::byte[]>(freeBytes_));
    free_ = blocks_.back().get();
  }
  freeBytes_ -= bytes;
  return std::exchange(free_, free_ + bytes);
}

} // namespace lumoscad::ado::detail
