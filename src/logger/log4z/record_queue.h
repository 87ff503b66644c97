#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace panelry::logger
{

/// A record in the queue: only what the worker needs, its bytes behind it.
struct QueuedRecord {
    std::int32_t id;
    std::int32_t kind;
    std::int32_t value;
    std::int32_t level;
    std::int64_t time;     ///< seconds since 1970
    std::uint32_t length;  ///< of Text()
    std::uint32_t unused;

    std::string_view Text() const { return {reinterpret_cast<const char*>(this + 1), length}; }
};

/// Records in the order of their arrival, packed into blocks that are filled again and again.
///
/// Ownership: owns its blocks. A record taken is good until Recycle().
/// Threading: none of its own. The manager has two, one on the callers' side and one that the worker empties,
///   and swaps them.
/// Failures: Append() returns false when there is no memory for another block.
class RecordQueue
{
public:
    RecordQueue() = default;
    ~RecordQueue() { FreeBehind(nullptr); }
    RecordQueue(const RecordQueue&) = delete;
    RecordQueue& operator=(const RecordQueue&) = delete;

    bool Append(QueuedRecord head, std::string_view text) noexcept;
    std::size_t Size() const { return m_size; }

    /// The next record in the order of arrival, null behind the last one.
    const QueuedRecord* Take() noexcept;

    /// Empties the queue after all was taken. Blocks beyond those of a usual burst go back to the heap, but
    /// for `keepAll`.
    void Recycle(bool keepAll) noexcept;

    void Swap(RecordQueue& other) noexcept;

private:
    struct Block;

    bool MoveToNextBlock() noexcept;
    void FreeBehind(Block* last) noexcept;

    Block* m_first = nullptr;
    Block* m_filling = nullptr;  // null: nothing appended yet
    Block* m_taking = nullptr;   // null: nothing taken yet
    std::size_t m_taken = 0;     // bytes of *m_taking
    std::size_t m_size = 0;      // records appended
};

}  // namespace panelry::logger
