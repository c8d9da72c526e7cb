#include "platform/base/CharacterConverter.hpp"

#include <array>
#include <cerrno>

namespace lumoscad::base {

CharacterConverter::CharacterConverter(const std::string& encoding) : handle_(iconv_open("UTF-8", encoding.c_str())) {}

CharacterConverter::~CharacterConverter() {
  if (Known()) {
    iconv_close(handle_);
  }
}

bool CharacterConverter::Known() const {
  // The C interface reports failure with a pointer of all ones.
  return handle_ != reinterpret_cast<iconv_t>(-1); // NOLINT(performance-no-int-to-ptr)
}

Conversion CharacterConverter::Convert(std::string_view text, std::string& converted) const {
  std::string copy(text);
  char* source = copy.data();
  std::size_t left = copy.size();
  std::array<char, 16384> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): written before it is read
  iconv(handle_, nullptr, nullptr, nullptr, nullptr);
  while (left > 0) {
    char* written = buffer.data();
    std::size_t room = buffer.size();
    const auto outcome = iconv(handle_, &source, &left, &written, &room);
    const int error = errno;
    converted.append(buffer.data(), buffer.size() - room);
    if (outcome == static_cast<std::size_t>(-1) && error != E2BIG) {
      return error == EINVAL ? Conversion::Incomplete : Conversion::Invalid;
    }
  }
  return Conversion::Whole;
}

} // namespace lumoscad::base
