#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace lumoscad::qt {

/// UTF-8 text as Qt keeps it.
[[nodiscard]] inline QString Text(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Qt's text as UTF-8.
[[nodiscard]] inline std::string Utf8(const QString& text) {
  const QByteArray byte = text.toUtf8();
  return {byte.constData(), static_cast<std::size_t>(byte.size())};
}

} // namespace lumoscad::qt
