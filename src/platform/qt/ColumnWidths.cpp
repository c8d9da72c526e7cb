#include "platform/qt/ColumnWidths.hpp"

#include "platform/qt/Look.hpp"

#include <algorithm>
#include <cstdint>

namespace lumoscad::qt {

ColumnWidths::ColumnWidths(const std::vector<ListColumn>& columns) {
  columns_.reserve(columns.size());
  for (const ListColumn& column : columns) {
    const int twips = std::max(column.width, 0);
    const bool elastic = column.kind == ListColumn::Kind::Text || column.kind == ListColumn::Kind::BankEditor;
    const int pixel = twips == 0 ? 0 : std::max(1, look::PixelsX(twips + look::TwipsX(1) / 2));
    columns_.push_back({end_, twips, pixel, elastic && twips > 0});
    end_ += twips;
    total_ += pixel;
  }
}

std::vector<int> ColumnWidths::Pixel(int available, const std::map<int, int>& chosen) const {
  int elastics = 0;
  int taken = total_;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const auto choice = chosen.find(static_cast<int>(i));
    taken += choice != chosen.end() ? choice->second - columns_[i].pixel : 0;
    elastics += columns_[i].elastic && choice == chosen.end() ? columns_[i].pixel : 0;
  }
  int rest = elastics > 0 ? std::max(0, available - taken) : 0;
  std::vector<int> result;
  result.reserve(columns_.size());
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const Column& column = columns_[i];
    if (const auto choice = chosen.find(static_cast<int>(i)); choice != chosen.end()) {
      result.push_back(choice->second);
      continue;
    }
    int width = column.pixel;
    if (column.elastic && elastics > 0) {
      // Each elastic column takes its share of what is still left, so that the rounding never loses a pixel.
      const auto part = static_cast<int>(std::int64_t{rest} * column.pixel / elastics);
      width += part;
      rest -= part;
      elastics -= column.pixel;
    }
    result.push_back(width);
  }
  return result;
}

int ColumnWidths::Twips(int column, int offset, int width) const {
  const Column& c = columns_.at(static_cast<std::size_t>(column));
  if (width <= 0 || c.twips == 0) {
    return c.begin;
  }
  const auto inside = static_cast<int>(std::int64_t{offset} * c.twips / width);
  return c.begin + std::clamp(inside, 0, c.twips - 1);
}

int ColumnWidths::Middle(int column) const {
  const Column& c = columns_.at(static_cast<std::size_t>(column));
  return c.begin + c.twips / 2;
}

int ColumnWidths::Beyond(int offset) const {
  return end_ + look::TwipsX(std::max(0, offset));
}

} // namespace lumoscad::qt
