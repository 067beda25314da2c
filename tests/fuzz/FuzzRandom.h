#pragma once
// The campaign's random stream (xorshift64*): the same inputs on every run
// and machine for the same seed.
#include <cstdint>
#include <string>

namespace fuzz {

class CFuzzRandom {
public:
    explicit CFuzzRandom(uint64_t seed) : m_state(seed ? seed : 0x9E3779B97F4A7C15ull) {}
    uint64_t Next()
    {
        m_state ^= m_state >> 12;
        m_state ^= m_state << 25;
        m_state ^= m_state >> 27;
        return m_state * 2685821657736338717ull;
    }
    // 0 .. n-1 (0 when n is 0).
    size_t Below(size_t n) { return n ? static_cast<size_t>(Next() % n) : 0; }
    bool OneIn(size_t n) { return Below(n) == 0; }

private:
    uint64_t m_state;
};

} // namespace fuzz
