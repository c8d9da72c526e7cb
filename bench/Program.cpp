#include "Program.hpp"

#include "Measures.hpp"
#include "support/Paths.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace lumoscad::bench {
namespace {

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> Environment(const std::vector<std::string>& settings) {
  std::vector<std::string> all = settings;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    const std::string name = text.substr(0, text.find('=') + 1);
    const bool replaced = std::any_of(settings.begin(), settings.end(),
                                      [&name](const std::string& setting) { return setting.starts_with(name); });
    if (!replaced) {
      all.push_back(text);
    }
  }
  return all;
}

std::string Everything(int pipe) {
  std::string text;
  std::array<char, 4096> piece{};
  for (;;) {
    const ssize_t got = ::read(pipe, piece.data(), piece.size());
    if (got == 0 || (got < 0 && errno != EINTR)) {
      return text;
    }
    text.append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
  }
}

} // namespace

Ended Run(const std::string& program, const std::vector<std::string>& arguments,
          const std::vector<std::string>& settings) {
  std::vector<std::string> words{test::ProgramPath(program).string()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment = Environment(settings);
  std::array<int, 2> pipe{};
  if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&files, pipe[1], STDOUT_FILENO);
  pid_t process = -1;
  Ended ended;
  ended.begin = Now();
  const int error = ::posix_spawn(&process, words.front().c_str(), &files, nullptr, Pointers(words).data(),
                                  Pointers(environment).data());
  posix_spawn_file_actions_destroy(&files);
  ::close(pipe[1]);
  ended.output = Everything(pipe[0]);
  ::close(pipe[0]);
  int status = 0;
  while (error == 0 && ::waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  ended.milliseconds = Now() - ended.begin;
  if (error != 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw std::runtime_error(program + " failed: " + ended.output);
  }
  return ended;
}

double NumberBefore(const std::string& output, const std::string& unit) {
  const auto end = output.find(" " + unit);
  if (end == std::string::npos) {
    throw std::runtime_error("no " + unit + " in: " + output);
  }
  const auto begin = output.find_last_of(" \n", end - 1);
  return std::stod(output.substr(begin == std::string::npos ? 0 : begin + 1, end));
}

std::vector<std::string> Words(const std::string& text) {
  std::vector<std::string> words;
  for (std::size_t at = 0; at < text.size();) {
    const auto end = std::min(text.find(' ', at), text.size());
    words.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return words;
}

} // namespace lumoscad::bench
