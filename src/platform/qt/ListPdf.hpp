#pragma once

#include "platform/ListReport.hpp"

#include <QByteArray>

namespace lumoscad::qt {

/// The rows on pages of A4 across, the headings on each page, the totals behind the last row.
[[nodiscard]] QByteArray PdfOf(const PrintedTable& table);

} // namespace lumoscad::qt
