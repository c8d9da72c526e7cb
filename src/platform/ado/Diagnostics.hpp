#pragma once

#include "platform/RuntimeError.hpp"
#include "platform/ado/Handles.hpp"

#include <string>
#include <string_view>

namespace lumoscad::ado::detail {

/// Numbers of the errors that this layer finds by itself.
namespace numbers {
inline constexpr int EndOfRows = 3021;               ///< no current row
inline constexpr int InvalidContext = 3219;          ///< not allowed in the present state of things
inline constexpr int NoSuchColumn = 3265;            ///< the result has no such column
inline constexpr int ObjectClosed = 3704;            ///< the object is closed
inline constexpr int ObjectOpen = 3705;              ///< the object is open already
inline constexpr int WrongParameters = -2147217904;  ///< wrong count of parameters
inline constexpr int ConcurrentChange = -2147217864; ///< the row is no longer as it was read
} // namespace numbers

/// The error number that stands for an SQLSTATE.
[[nodiscard]] int ErrorNumber(std::string_view sqlstate) noexcept;

/// Whether a failure with this SQLSTATE leaves it open what the server made of the statement: the connection was lost
/// (class 08), the wait ended first (HYT), or the driver says outright that it does not know (25S01, 40003;
/// https://learn.microsoft.com/en-us/sql/odbc/reference/syntax/sqlendtran-function).
[[nodiscard]] bool WithoutAnswer(std::string_view sqlstate) noexcept;

/// Blots out every piece of `password` of four bytes or more in `text`, in any case: the password may have been used as
/// a schema name, whose case a server folds and of which its messages quote what they do not understand.
[[nodiscard]] std::string WithoutPassword(std::string text, std::string_view password);

/// All diagnostic records of a handle as one error, numbered by the first record, whose SQLSTATE and native number it
/// carries, with a note that says what they mean to the person where that is known; `context` describes the failure
/// where the driver left no record. `dead` says that the connection is known to be lost. The password occurs in no
/// part of it.
[[nodiscard]] RuntimeError OdbcError(SQLSMALLINT kind, SQLHANDLE handle, std::string_view password,
                                     std::string_view context, bool dead = false);

} // namespace lumoscad::ado::detail
