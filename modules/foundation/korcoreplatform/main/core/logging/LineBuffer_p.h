/// Bytes that grow at the end: what log lines are rendered into.

#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace TLog {

/// Bytes are written through a bare pointer, for which room was asked before:
///
///     char* to = buffer.Reserve(2);
///     *to++ = ',';
///     buffer.Commit(to);
///
/// Throws: `std::bad_alloc` where it grows, and is then unchanged.
/// Thread safety: one thread at a time.
class LineBuffer
{
public:
    char const* Data() const noexcept { return m_bytes.get(); } ///< Null until there was room.
    std::size_t Size() const noexcept { return m_size; }
    std::string_view View() const noexcept { return {m_bytes.get(), m_size}; }

    /// The end of the bytes, with room for at least `room` more. A later call moves it.
    char* Reserve(std::size_t room)
    {
        if (m_capacity - m_size < room) {
            Grow(room);
        }
        return m_bytes.get() + m_size;
    }

    /// Makes `end`, which lies in the room, the end of the bytes.
    void Commit(char const* end) noexcept
    {
        m_size = static_cast<std::size_t>(end - m_bytes.get());
    }

    void Append(char c)
    {
        *Reserve(1) = c;
        ++m_size;
    }

    void Append(std::string_view bytes)
    {
        char* const to = Reserve(bytes.size());
        if (!bytes.empty()) {
            std::memcpy(to, bytes.data(), bytes.size());
        }
        m_size += bytes.size();
    }

    /// Keeps the first `size` bytes, and the room of the others.
    void Truncate(std::size_t size) noexcept { m_size = size; }

private:
    static constexpr std::size_t kFirstCapacity = 1024;

    void Grow(std::size_t room)
    {
        std::size_t capacity = m_capacity == 0 ? kFirstCapacity : 2 * m_capacity;
        if (capacity - m_size < room) {
            capacity = m_size + room;
        }
        std::unique_ptr<char[]> bytes(new char[capacity]); // not cleared
        if (m_size != 0) {
            std::memcpy(bytes.get(), m_bytes.get(), m_size);
        }
        m_bytes = std::move(bytes);
        m_capacity = capacity;
    }

    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

} // namespace TLog
