#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <string_view>
#include <type_traits>

#include "logger/log4z/loger_manager.h"
#include "logger/log4z/record_text.h"

/// The callers' front end of the logger, for code inside the library and for tests. (A module that compiled
/// it in would have a manager of its own; modules log by WriteModuleLog.)
///
///     const logger::Logger log;                                    // the main logger
///     log.Write(log4z::Info, "price ", price, " of ", code);
///     log.Write(log4z::Debug, "orders: ", [&] { return Dump(orders); });
namespace panelry::logger
{

/// The level of a line and the place in the source that writes it; made from a level by the compiler.
struct Where {
    Where(log4z::Level lineLevel, const char* path = __builtin_FILE(), int number = __builtin_LINE())
        : level(lineLevel), line(number)
    {
        const char* const slash = __builtin_strrchr(path, '/');  // known to the compiler
        file = slash ? slash + 1 : path;
    }

    log4z::Level level;
    const char* file;
    int line;
};

/// Appends one part of a line: text, letters, numbers, "true" and "false", enumerations as numbers, pointers
/// in hexadecimal. A function is called for its result.
template <class Part>
void AppendPart(RecordText& text, const Part& part)
{
    using Plain = std::decay_t<Part>;
    if constexpr (std::is_invocable_v<const Part&>) {
        AppendPart(text, part());
    } else if constexpr (std::same_as<Plain, bool>) {
        text.Append(part ? std::string_view("true") : std::string_view("false"));
    } else if constexpr (std::same_as<Plain, char>) {
        text.Append(part);
    } else if constexpr (std::is_enum_v<Plain>) {
        text.AppendNumber(static_cast<std::int64_t>(part));
    } else if constexpr (std::is_arithmetic_v<Plain>) {
        text.AppendNumber(part);
    } else if constexpr (std::same_as<Plain, const char*> || std::same_as<Plain, char*>) {
        const char* const letters = part;
        text.Append(letters ? std::string_view(letters) : std::string_view("(null)"));
    } else if constexpr (std::convertible_to<const Part&, std::string_view>) {
        text.Append(std::string_view(part));
    } else {
        static_assert(std::is_pointer_v<Plain>, "this can't be logged");
        text.Append("0x");
        text.AppendNumber(reinterpret_cast<std::uintptr_t>(part), 16);
    }
}

/// Writes lines to one logger of a manager.
///
/// Ownership: refers to the manager, which must outlive it. Cheap to make and to copy, cheaper to keep.
/// Threading: any thread.
/// Failures: false when the line was filtered or there is no memory for it. What a function throws leaves
///   Write(), and the line is dropped.
class Logger
{
public:
    /// `id` lies below log4z::LOGGER_MAX.
    explicit Logger(int id = 0, log4z::LogerManager& manager = log4z::LogerManager::Instance())
        : m_manager(&manager), m_gate(&manager.Gate(id)), m_id(id)
    {
    }

    bool Passes(log4z::Level level) const { return level >= m_gate->load(std::memory_order_relaxed); }

    /// Writes a line from its parts. A filtered line costs the test alone, and its functions aren't called.
    template <class... Parts>
    bool Write(Where where, const Parts&... parts) const
    {
        return Passes(where.level) && WriteParts(where, parts...);
    }

private:
    struct GiveBack {
        log4z::LogerManager* manager;
        void operator()(log4z::LogRecord* record) const { manager->FreeRecord(record); }
    };
    using OwnedRecord = std::unique_ptr<log4z::LogRecord, GiveBack>;  // a part of a line may throw

    template <class... Parts>
    [[gnu::noinline]] bool WriteParts(Where where, const Parts&... parts) const
    {
        if (!m_manager->CanPush(m_id, where.level)) {
            return false;
        }
        OwnedRecord record(m_manager->MakeRecord(m_id, where.level, where.file, where.line), {m_manager});
        if (!record) {
            return false;
        }
        RecordText text(*record);
        (AppendPart(text, parts), ...);
        return m_manager->PushLine(record.release(), where.file, where.line);
    }

    log4z::LogerManager* m_manager;
    const std::atomic<std::int64_t>* m_gate;
    int m_id;
};

}  // namespace panelry::logger
