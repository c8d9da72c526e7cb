#pragma once

#include <filesystem>
#include <string_view>

namespace lumoscad::test {

/// Where things stand, as the running program finds out: no object names a directory of the clone or of the build, so a
/// second clone can use what the first one has compiled.

/// The build folder: the one above the `bin` of the running program.
[[nodiscard]] const std::filesystem::path& BuildFolder();

/// The clone's root, as the build folder's file `sources.txt` tells; raises where it does not.
[[nodiscard]] const std::filesystem::path& SourceFolder();

/// A file or folder of the clone, by its path below the root.
[[nodiscard]] std::filesystem::path SourcePath(std::string_view name);

/// A program of the build, by the name of its target.
[[nodiscard]] std::filesystem::path ProgramPath(std::string_view name);

/// A shared library or module of the build, by the name of its target.
[[nodiscard]] std::filesystem::path LibraryPath(std::string_view name);

/// A place below the build folder for what a test leaves behind; nothing is made there.
[[nodiscard]] std::filesystem::path OutputPath(std::string_view name);

} // namespace lumoscad::test
