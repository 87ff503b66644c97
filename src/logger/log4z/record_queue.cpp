#include "logger/log4z/record_queue.h"

#include <cstring>
#include <new>

namespace panelry::logger
{

namespace
{

constexpr std::size_t kBlockBytes = 64 * 1024;
constexpr std::size_t kBlocksKept = 128;  // some 40000 usual lines, where callers are slowed down most

std::size_t PackedSize(std::size_t textLength)
{
    constexpr std::size_t mask = alignof(QueuedRecord) - 1;
    return sizeof(QueuedRecord) + ((textLength + mask) & ~mask);
}

}  // namespace

struct RecordQueue::Block {  // NOLINT(cppcoreguidelines-pro-type-member-init)
    Block* next = nullptr;
    std::size_t used = 0;
    // Not initialised: each byte is written before it is read.
    alignas(QueuedRecord) char bytes[kBlockBytes - 2 * sizeof(std::size_t)];
};

bool RecordQueue::Append(QueuedRecord head, std::string_view text) noexcept
{
    const std::size_t size = PackedSize(text.size());
    if ((!m_filling || m_filling->used + size > sizeof(Block::bytes)) && !MoveToNextBlock()) {
        return false;
    }
    char* const place = m_filling->bytes + m_filling->used;
    head.length = static_cast<std::uint32_t>(text.size());
    new (place) QueuedRecord(head);
    if (!text.empty()) {
        std::memcpy(place + sizeof head, text.data(), text.size());
    }
    m_filling->used += size;
    ++m_size;
    return true;
}

bool RecordQueue::MoveToNextBlock() noexcept
{
    Block*& next = m_filling ? m_filling->next : m_first;
    if (!next) {
        next = new (std::nothrow) Block;  // its bytes stay untouched
    }
    if (!next) {
        return false;
    }
    m_filling = next;
    return true;
}

const QueuedRecord* RecordQueue::Take() noexcept
{
    if (!m_filling) {
        return nullptr;
    }
    if (!m_taking) {
        m_taking = m_first;
        m_taken = 0;
    }
    while (m_taken == m_taking->used) {
        if (m_taking == m_filling) {
            return nullptr;
        }
        m_taking = m_taking->next;
        m_taken = 0;
    }
    const auto* const record = reinterpret_cast<const QueuedRecord*>(m_taking->bytes + m_taken);
    m_taken += PackedSize(record->length);
    return record;
}

void RecordQueue::Recycle(bool keepAll) noexcept
{
    std::size_t kept = 0;
    Block* last = nullptr;
    for (Block* block = m_first; block && (keepAll || kept < kBlocksKept); block = block->next) {
        block->used = 0;
        last = block;
        ++kept;
    }
    FreeBehind(last);
    m_filling = nullptr;
    m_taking = nullptr;
    m_size = 0;
}

void RecordQueue::FreeBehind(Block* last) noexcept
{
    Block* block = std::exchange(last ? last->next : m_first, nullptr);
    while (block) {
        delete std::exchange(block, block->next);
    }
}

void RecordQueue::Swap(RecordQueue& other) noexcept
{
    std::swap(m_first, other.m_first);
    std::swap(m_filling, other.m_filling);
    std::swap(m_taking, other.m_taking);
    std::swap(m_taken, other.m_taken);
    std::swap(m_size, other.m_size);
}

}  // namespace panelry::logger
