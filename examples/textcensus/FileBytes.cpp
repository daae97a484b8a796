#include "FileBytes.h"

#include "korcoreplatform/main/core/files/TFile.h"

#include <algorithm>
#include <system_error>

namespace TextCensus {
namespace {

constexpr std::size_t kMinRoom = 64 * 1024;

/// No text is longer than this many units, and no encoding makes more units than it has bytes.
constexpr std::size_t kMaxFileBytes = (std::size_t(1) << 31) - 64;

void CheckSize(std::size_t size)
{
    if (size > kMaxFileBytes) {
        throw std::system_error(std::make_error_code(std::errc::file_too_large));
    }
}

} // namespace

void FileBytes::Read(TPath const& path)
{
    m_size = 0;
    TFile file(path, TIO::ReadOnly | TIO::Unbuffered);
    m_bytes.resize(std::max(m_bytes.size(), kMinRoom));
    for (;;) {
        std::size_t const room = m_bytes.size() - m_size;
        auto const count = static_cast<std::size_t>(
            file.Read(m_bytes.data() + m_size, static_cast<long long>(room)));
        m_size += count;
        CheckSize(m_size);
        if (count < room) {
            return;
        }
        // Only now is the size worth a call. One byte more lets the next read see the end.
        auto const expectedSize = static_cast<std::size_t>(std::max(file.Size(), 0LL));
        CheckSize(expectedSize);
        m_bytes.resize(expectedSize > m_size ? expectedSize + 1 : 2 * m_size);
    }
}

} // namespace TextCensus
