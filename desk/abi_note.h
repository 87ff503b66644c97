#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace panelry::desk
{

/// The ABI that an ELF file says it was built for ("cxxabi=...;stdlib=...;qt=...;sdk=..."), read from its
/// notes without loading it. Nothing for a file without such a note, and for what is no ELF file of this
/// machine's kind.
std::optional<std::string> ReadAbiNote(const std::filesystem::path& path);

/// Whether the file begins as every ELF file does.
bool IsElf(const std::filesystem::path& path);

/// "qt is 6, here 5": the fields in which `theirs` differs from `ours`.
std::string AbiDifference(std::string_view theirs, std::string_view ours);

}  // namespace panelry::desk
