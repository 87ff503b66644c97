#include "desk/abi_note.h"

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <vector>

namespace panelry::desk
{

namespace
{

constexpr char kNoteName[] = "Panelry";  // the NUL at its end is part of it
constexpr std::uint32_t kNoteType = 1;
constexpr std::uint64_t kLargestNotes = 1 << 20;  // of a broken file, not of a real one

/// Only a real file is opened: a pipe would hold up the reader. The stream fails for all others.
std::ifstream Open(const std::filesystem::path& path)
{
    std::ifstream file;
    std::error_code ignored;
    if (std::filesystem::is_regular_file(path, ignored)) {
        file.open(path, std::ios::binary);
    } else {
        file.setstate(std::ios::failbit);
    }
    return file;
}

/// A value of type T at `offset` of the file.
template <class T>
std::optional<T> ReadAt(std::ifstream& file, std::uint64_t offset)
{
    T value{};
    file.seekg(static_cast<std::streamoff>(offset));
    if (!file.read(reinterpret_cast<char*>(&value), sizeof value)) {
        return std::nullopt;
    }
    return value;
}

constexpr std::uint64_t Aligned(std::uint64_t size, std::uint64_t alignment)
{
    return (size + alignment - 1) / alignment * alignment;
}

/// The text of our note among the notes of one segment.
std::optional<std::string> FindNote(std::string_view notes, std::uint64_t alignment)
{
    ElfW(Nhdr) header;
    while (notes.size() >= sizeof header) {
        std::memcpy(&header, notes.data(), sizeof header);
        notes.remove_prefix(sizeof header);
        const std::uint64_t nameSize = Aligned(header.n_namesz, alignment);
        const std::uint64_t size = nameSize + Aligned(header.n_descsz, alignment);
        if (nameSize + header.n_descsz > notes.size()) {
            return std::nullopt;
        }
        if (header.n_type == kNoteType &&
            notes.substr(0, header.n_namesz) == std::string_view(kNoteName, sizeof kNoteName)) {
            const std::string_view text = notes.substr(nameSize, header.n_descsz);
            return std::string(text.substr(0, text.find('\0')));
        }
        notes.remove_prefix(std::min<std::uint64_t>(size, notes.size()));
    }
    return std::nullopt;
}

std::optional<std::string> FindNote(std::ifstream& file, const ElfW(Phdr) & segment)
{
    if (segment.p_type != PT_NOTE || segment.p_filesz > kLargestNotes) {
        return std::nullopt;
    }
    std::string notes(segment.p_filesz, '\0');
    file.seekg(static_cast<std::streamoff>(segment.p_offset));
    if (!file.read(notes.data(), static_cast<std::streamsize>(notes.size()))) {
        return std::nullopt;
    }
    return FindNote(notes, segment.p_align == 8 ? 8 : 4);
}

bool IsOfThisMachine(const ElfW(Ehdr) & header)
{
    constexpr unsigned char kClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_ident[EI_CLASS] == kClass &&
           header.e_ident[EI_DATA] == (__BYTE_ORDER == __LITTLE_ENDIAN ? ELFDATA2LSB : ELFDATA2MSB) &&
           header.e_phentsize == sizeof(ElfW(Phdr));
}

std::map<std::string_view, std::string_view> FieldsOf(std::string_view note)
{
    std::map<std::string_view, std::string_view> fields;
    while (!note.empty()) {
        const std::string_view field = note.substr(0, note.find(';'));
        note.remove_prefix(std::min(field.size() + 1, note.size()));
        const std::size_t equals = std::min(field.find('='), field.size());
        fields[field.substr(0, equals)] = field.substr(std::min(equals + 1, field.size()));
    }
    return fields;
}

}  // namespace

std::optional<std::string> ReadAbiNote(const std::filesystem::path& path)
{
    std::ifstream file = Open(path);
    const auto header = ReadAt<ElfW(Ehdr)>(file, 0);
    if (!header || !IsOfThisMachine(*header)) {
        return std::nullopt;
    }
    for (unsigned i = 0; i < header->e_phnum; ++i) {
        const auto segment = ReadAt<ElfW(Phdr)>(file, header->e_phoff + i * sizeof(ElfW(Phdr)));
        if (!segment) {
            return std::nullopt;
        }
        if (std::optional<std::string> note = FindNote(file, *segment)) {
            return note;
        }
        file.clear();
    }
    return std::nullopt;
}

bool IsElf(const std::filesystem::path& path)
{
    std::ifstream file = Open(path);
    char magic[SELFMAG] = {};
    return file.read(magic, sizeof magic) && std::memcmp(magic, ELFMAG, SELFMAG) == 0;
}

std::string AbiDifference(std::string_view theirs, std::string_view ours)
{
    const auto here = FieldsOf(ours);
    auto there = FieldsOf(theirs);
    std::string text;
    const auto add = [&text](std::string_view name, std::string_view their, std::string_view our) {
        text.append(text.empty() ? "" : ", ")
            .append(name)
            .append(" is ")
            .append(their.empty() ? "unknown" : their);
        text.append(", here ").append(our.empty() ? "unknown" : our);
    };
    for (const auto& [name, value] : here) {
        if (there[name] != value) {
            add(name, there[name], value);
        }
        there.erase(name);
    }
    for (const auto& [name, value] : there) {
        add(name, value, {});
    }
    return text;
}

}  // namespace panelry::desk
