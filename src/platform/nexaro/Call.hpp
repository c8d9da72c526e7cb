#pragma once

#include "platform/HostLink.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/xml/Nodo.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::nexaro {

/// Bytes of a program's standard error that are kept for the message.
inline constexpr std::size_t MaxErrorsShown = 2000;

/// The largest file that is received, in bytes: as much as a reply. What a host has to give is a lock of two lines; one
/// that gives without end is to fill neither this machine's disk nor the person's day.
inline constexpr std::uint64_t MaxReceived = xml::LargestSize;
/// Why a larger one is refused; fits behind a colon.
inline constexpr const char* TooLargeReason = "il file supera i 16 MiB ammessi";

/// Why a download that was not over at the end of the wait is given up; fits behind a colon.
[[nodiscard]] std::string TooSlowReason(std::chrono::milliseconds timeout);

/// Raises a run-time error unless `remote` is an absolute path of the host without ".." and null characters.
void CheckPath(std::string_view remote);

/// "Il programma VB0001 sull'host 10.0.0.1", the subject of every message about a call.
[[nodiscard]] std::string ProgramSubject(std::string_view program, std::string_view host);

/// Raises a run-time error unless `program` is a plain name and no parameter holds a null character.
void CheckCall(std::string_view program, const std::vector<std::string>& parameters, const std::string& subject);

/// The end of a message: a full stop, or a colon and what the program wrote to its standard error (UTF-8, at most
/// `MaxErrorsShown` bytes of it, never half a character).
[[nodiscard]] std::string MessageEnd(std::string errors);

/// The error of a program that was started and whose end says nothing of its work: it may have done it. `done` is what
/// happened, without an end of its own; `tail` as `MessageEnd` gives it. The text says that the outcome is unknown.
[[nodiscard]] RuntimeError ErrorAfterStart(const std::string& done, const std::string& tail, int number = LinkFailure);

/// Raises the error of a program that ended with an exit status other than 0. `remedy` is what can be done where the
/// status says that the program is missing.
void CheckStatus(int state, const std::string& subject, const std::string& tail, const std::string& remedy = {});

/// Whether a program has answered a whole document, so that nothing is missing though its output is still open.
[[nodiscard]] bool ReplyIsComplete(std::string_view output);

/// The document that a program answered. Raises a run-time error, which begins with `subject`, when there is none or
/// when it is not fit.
[[nodiscard]] xml::Nodo ReadReply(const std::string& output, const std::string& subject, const std::string& tail);

} // namespace lumoscad::nexaro
