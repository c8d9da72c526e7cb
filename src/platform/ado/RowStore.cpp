#include "platform/ado/RowStore.hpp"

#include "platform/RuntimeError.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

namespace lumoscad::ado::detail {

namespace {

constexpr std::size_t StoreBlockBytes = std::size_t{1} << 20;
/// A row begins with the size of its offsets. Their highest bit says that the cell is NULL.
using ShortOffset = std::uint16_t;
using LongOffset = std::uint32_t;
template <typename Offset> constexpr std::size_t Longest = std::size_t{1} << (sizeof(Offset) * 8 - 1);
template <typename Offset> constexpr auto NullFlag = static_cast<Offset>(Longest<Offset>);

using Cells = std::vector<std::optional<std::string_view>>;

/// Writes the cells behind the size of the offsets.
template <typename Offset> void WriteCells(std::byte* ends, const Cells& cells) {
  std::byte* const text = ends + cells.size() * sizeof(Offset);
  std::size_t at = 0;
  for (const auto& cell : cells) {
    if (cell && !cell->empty()) {
      std::memcpy(text + at, cell->data(), cell->size());
      at += cell->size();
    }
    const auto end = static_cast<Offset>(cell ? at : at | NullFlag<Offset>);
    std::memcpy(ends, &end, sizeof end);
    ends += sizeof end;
  }
}

template <typename Offset>
std::optional<std::string_view> ReadCell(const std::byte* ends, std::size_t columns, std::size_t column) noexcept {
  Offset end = 0;
  std::memcpy(&end, ends + column * sizeof end, sizeof end);
  if ((end & NullFlag<Offset>) != 0) {
    return std::nullopt;
  }
  Offset start = 0;
  if (column > 0) {
    std::memcpy(&start, ends + (column - 1) * sizeof start, sizeof start);
  }
  const std::size_t from = start & static_cast<Offset>(~NullFlag<Offset>);
  const auto* text = reinterpret_cast<const char*>(ends + columns * sizeof end);
  return std::string_view(text + from, end - from);
}

template <typename Offset> void ReadCells(const std::byte* ends, Cells& cells) noexcept {
  const auto* text = reinterpret_cast<const char*>(ends + cells.size() * sizeof(Offset));
  std::size_t start = 0;
  for (auto& cell : cells) {
    Offset end = 0;
    std::memcpy(&end, ends, sizeof end);
    ends += sizeof end;
    const std::size_t stop = end & static_cast<Offset>(~NullFlag<Offset>);
    if ((end & NullFlag<Offset>) != 0) {
      cell.reset();
    } else {
      cell = std::string_view(text + start, stop - start);
    }
    start = stop;
  }
}

} // namespace

void RowStore::Append(const std::vector<std::optional<std::string_view>>& cells) {
  rows_.push_back(Pack(cells));
}

void RowStore::Replace(std::size_t row, const std::vector<std::optional<std::string_view>>& cells) {
  rows_[row] = Pack(cells);
}

std::optional<std::string_view> RowStore::Cell(std::size_t row, std::size_t column) const noexcept {
  const std::byte* packed = rows_[row];
  return *packed == std::byte{sizeof(ShortOffset)} ? ReadCell<ShortOffset>(packed + 1, columns_, column)
                                                   : ReadCell<LongOffset>(packed + 1, columns_, column);
}

void RowStore::Read(std::size_t row, Cells& cells) const {
  cells.resize(columns_);
  const std::byte* packed = rows_[row];
  if (*packed == std::byte{sizeof(ShortOffset)}) {
    ReadCells<ShortOffset>(packed + 1, cells);
  } else {
    ReadCells<LongOffset>(packed + 1, cells);
  }
}

void RowStore::Clear() {
  *this = RowStore(columns_);
}

std::byte* RowStore::Pack(const std::vector<std::optional<std::string_view>>& cells) {
  std::size_t bytes = 0;
  for (const auto& cell : cells) {
    bytes += cell ? cell->size() : 0;
  }
  if (bytes >= Longest<LongOffset>) {
    throw RuntimeError(errors::OutOfMemory, "Una riga della base dati supera i 2 GiB.", "ODBC");
  }
  const bool shortOnes = bytes < Longest<ShortOffset>;
  const std::size_t offset = shortOnes ? sizeof(ShortOffset) : sizeof(LongOffset);
  std::byte* const packed = Allocate(1 + columns_ * offset + bytes);
  *packed = static_cast<std::byte>(offset);
  if (shortOnes) {
    WriteCells<ShortOffset>(packed + 1, cells);
  } else {
    WriteCells<LongOffset>(packed + 1, cells);
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
