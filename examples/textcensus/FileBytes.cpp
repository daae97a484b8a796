#include "FileBytes.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace TextCensus {
namespace {

constexpr std::size_t kMinRoom = 64 * 1024;

/// No text is longer than this many units, and no encoding makes more units than it has bytes.
constexpr std::size_t kMaxFileBytes = (std::size_t(1) << 31) - 64;

class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor()
    {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int Get() const { return m_descriptor; }

private:
    int m_descriptor;
};

TString ReasonOf(int systemError)
{
    return TString::fromStdString(std::generic_category().message(systemError));
}

/// Without waiting: what was a file a moment ago may be a pipe by now.
int Open(char const* path)
{
    int descriptor;
    do {
        descriptor = ::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

ssize_t ReadSome(int descriptor, char* room, std::size_t size)
{
    ssize_t count;
    do {
        count = ::read(descriptor, room, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

} // namespace

TString FileBytes::Read(std::filesystem::path const& path)
{
    m_size = 0;
    Descriptor const file(Open(path.c_str()));
    struct stat status;
    if (file.Get() < 0 || ::fstat(file.Get(), &status) != 0) {
        return ReasonOf(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return u"Not a regular file";
    }
    return ReadAll(file.Get(), static_cast<std::size_t>(std::max<off_t>(status.st_size, 0)));
}

TString FileBytes::ReadAll(int descriptor, std::size_t expectedSize)
{
    if (expectedSize > kMaxFileBytes) {
        return ReasonOf(EFBIG);
    }
    // One byte more than expected, to see the end without asking for more room.
    m_bytes.resize(std::max({m_bytes.size(), expectedSize + 1, kMinRoom}));
    ssize_t count;
    while ((count = ReadSome(descriptor, m_bytes.data() + m_size, m_bytes.size() - m_size)) > 0) {
        m_size += static_cast<std::size_t>(count);
        if (m_size > kMaxFileBytes) {
            return ReasonOf(EFBIG);
        }
        if (m_size == m_bytes.size()) {
            m_bytes.resize(2 * m_size);
        }
    }
    return count < 0 ? ReasonOf(errno) : TString();
}

} // namespace TextCensus
