#pragma once

#include <sql.h>
#include <sqlext.h>

#include <new>
#include <utility>

namespace lumoscad::ado::detail {

/// Owns one ODBC handle of the kind `Kind`.
template <SQLSMALLINT Kind> class Handle {
 public:
  Handle() = default;
  explicit Handle(SQLHANDLE parent) {
    if (!SQL_SUCCEEDED(SQLAllocHandle(Kind, parent, &handle_))) {
      throw std::bad_alloc();
    }
  }
  /// Takes over a handle that was allocated elsewhere.
  [[nodiscard]] static Handle Adopt(SQLHANDLE handle) noexcept {
    Handle taken;
    taken.handle_ = handle;
    return taken;
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Handle() { reset(); }

  void reset() noexcept {
    if (handle_ != nullptr) {
      SQLFreeHandle(Kind, std::exchange(handle_, nullptr));
    }
  }
  [[nodiscard]] SQLHANDLE get() const noexcept { return handle_; }
  [[nodiscard]] explicit operator bool() const noexcept { return handle_ != nullptr; }

 private:
  SQLHANDLE handle_ = nullptr;
};

/// ODBC passes numbers through pointer parameters.
inline SQLPOINTER AsPointer(SQLULEN number) noexcept {
  return reinterpret_cast<SQLPOINTER>(number); // NOLINT(performance-no-int-to-ptr)
}

} // namespace lumoscad::ado::detail
