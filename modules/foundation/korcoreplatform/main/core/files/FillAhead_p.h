/// Large blocks of memory that are filled from their start on.

#pragma once

#include <cstddef>
#include <cstdint>

/// Has the system bring in the pages of a block that was not touched yet, many at a time and
/// shortly before they are filled: more than half of the time of reading a large file goes into the
/// first touch of each page. What is never reached stays out of memory. Small blocks are left
/// alone.
///
/// Thread safety: one thread at a time.
class FillAhead
{
public:
    FillAhead(void* block, std::size_t bytes) noexcept;

    /// The block will now be filled up to `end`, which lies in it or behind its end.
    void Reach(void const* end) noexcept
    {
        while (reinterpret_cast<std::uintptr_t>(end) > m_begin && m_begin != m_end) {
            BringIn();
        }
    }

private:
    void BringIn() noexcept;

    std::uintptr_t m_begin; ///< Of what was not brought in yet, at the start of a page,
    std::uintptr_t m_end;   ///< and its end.
};
