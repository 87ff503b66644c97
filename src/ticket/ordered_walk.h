#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "services/records.h"

namespace panelry::ticket
{

/// Are two keys the same? Most are of 8 to 16 letters, which two words cover without a call.
inline bool SameKey(const std::string& one, const std::string& other)
{
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    const std::size_t size = one.size();
    if (size != other.size() || size < kWord || size > 2 * kWord) {
        return one == other;
    }
    const auto word = [](const char* letters) {
        std::uint64_t value = 0;
        std::memcpy(&value, letters, kWord);
        return value;
    };
    return word(one.data()) == word(other.data()) &&
           word(one.data() + size - kWord) == word(other.data() + size - kWord);
}

/// `to` becomes `from`: without a call for a price that takes the place of one of the same length.
inline void Overwrite(std::string& to, const std::string& from)
{
    constexpr std::size_t kHalf = sizeof(std::uint32_t);
    const std::size_t size = from.size();
    if (to.size() != size || size < kHalf || size > 2 * kHalf) {
        to = from;
        return;
    }
    std::memcpy(to.data(), from.data(), kHalf);
    std::memcpy(to.data() + size - kHalf, from.data() + size - kHalf, kHalf);
}

/// Finds keys of a map that come in rising order, each once, without searching from the root for each of them: what is
/// wanted mostly lies a step ahead. `Map` is StringMap or const StringMap, and outlives the walk; keys may be
/// added meanwhile, none removed.
template <class Map>
class OrderedWalk
{
public:
    explicit OrderedWalk(Map& map) : m_map(map), m_at(map.end()) {}

    /// The value of `key`, empty when absent.
    const std::string& Read(const std::string& key) { return Seek(key) ? (m_at++)->second : kNothing; }

    /// The value of `key`, which is there from now on.
    std::string& Write(const std::string& key)
    {
        if (!Seek(key)) {
            m_at = m_map.emplace_hint(m_at, key, std::string());
        }
        return (m_at++)->second;
    }

private:
    // Goes to `key`, or to its place; false if the map hasn't got it.
    bool Seek(const std::string& key)
    {
        constexpr int kMostSteps = 4;  // then a search is cheaper
        for (int step = m_begun ? 0 : kMostSteps; step < kMostSteps; ++step, ++m_at) {
            if (m_at == m_map.end()) {
                return false;
            }
            if (SameKey(m_at->first, key)) {
                return true;
            }
            if (m_at->first > key) {
                return false;
            }
        }
        m_begun = true;
        m_at = m_map.lower_bound(key);
        return m_at != m_map.end() && m_at->first == key;
    }

    static inline const std::string& kNothing = *new std::string;

    Map& m_map;
    bool m_begun = false;
    decltype(m_map.begin()) m_at;
};

}  // namespace panelry::ticket
