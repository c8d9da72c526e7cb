#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace lumoscad::qt {

/// UTF-8 text as Qt keeps it.
[[nodiscard]] inline QString Testo(std::string_view testo) {
  return QString::fromUtf8(testo.data(), static_cast<qsizetype>(testo.size()));
}

/// Qt's text as UTF-8.
[[nodiscard]] inline std::string Utf8(const QString& testo) {
  const QByteArray byte = testo.toUtf8();
  return {byte.constData(), static_cast<std::size_t>(byte.size())};
}

} // namespace lumoscad::qt
