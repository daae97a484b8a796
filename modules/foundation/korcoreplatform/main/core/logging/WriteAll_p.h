/// Writing to a descriptor until all is written.

#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string_view>

#include <unistd.h>

namespace TLog {

/// Goes on after short writes and signals. Returns how many bytes were written: fewer than given
/// when a write failed, whose `errno` stays.
inline std::size_t WriteAll(int descriptor, std::string_view bytes) noexcept
{
    constexpr std::size_t kMaxBytesAtOnce = 1u << 30; // systems refuse or cut more than 2 GiB
    std::size_t written = 0;
    while (written < bytes.size()) {
        std::size_t const size = std::min(bytes.size() - written, kMaxBytesAtOnce);
        ssize_t const count = ::write(descriptor, bytes.data() + written, size);
        if (count > 0) {
            written += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            break;
        }
    }
    return written;
}

} // namespace TLog
