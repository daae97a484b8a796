#include "korcoreplatform/main/core/files/TDirectory.h"

#include "korcoreplatform/main/core/files/PathFunctions.h"
#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/ThrowError.h"

#include <cstring>

namespace {

/// Whether the name is "." or "..". No other bytes decode to these.
bool IsDotName(char const* name)
{
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

} // namespace

TDirectory::iterator TDirectory::begin() const
{
    return iterator(m_path);
}

TDirectory::iterator TDirectory::end() const noexcept
{
    return iterator();
}

bool TDirectory::isEmpty() const
{
    return begin() == end();
}

TDirectory::iterator::iterator(TPath const& directory) : m_directory(directory)
{
    TString const native = directory.NativeString();
    if (!DirectoryExists(directory)) {
        ThrowError<Exception>(u"Directory does not exist: " + native,
                              &KorErrorsError::AutoGen_0xF0366EE6);
    }
    m_stream.reset(::opendir(native.toStdString().c_str()));
    if (!m_stream) {
        ThrowError<Exception>(u"Unable to open directory: " + native,
                              &KorErrorsError::AutoGen_0x798E13C2);
    }
    ++*this;
}

TDirectory::iterator::~iterator() = default;

TDirectory::iterator& TDirectory::iterator::operator++()
{
    if (!m_stream) {
        ThrowError<Exception>(TString(u"Attempt to increment directory iterator past end"),
                              &KorErrorsError::AutoGen_0x027437A0);
    }
    dirent const* entry;
    do {
        entry = ::readdir(m_stream.get());
    } while (entry != nullptr && IsDotName(entry->d_name));
    if (entry != nullptr) {
        SetEntry(entry->d_name);
    } else {
        close();
    }
    return *this;
}

TPath TDirectory::iterator::operator*() const
{
    if (!m_stream) {
        ThrowError<Exception>(TString(u"Attempt to deference directory iterator at end"),
                              &KorErrorsError::AutoGen_0x7DF53CA6);
    }
    return m_entry;
}

void TDirectory::iterator::close() noexcept
{
    m_stream.reset();
    m_entry.Clear();
}

/// The directory's path and the name, joined as `operator/` joins them: a name neither begins nor
/// ends with a separator.
void TDirectory::iterator::SetEntry(char const* name)
{
    TString const directory = m_directory.NativeString();
    int const nameBytes = static_cast<int>(std::strlen(name));
    int const prefixLength = directory.length() + (m_directory.HasTrailingSeparator() ? 0 : 1);
    TString text = static_cast<TPath&&>(m_entry);
    if (text.isShared() || text.length() < prefixLength) {
        text = TString();
        text.reserve(prefixLength + nameBytes);
        text.append(directory);
        if (text.length() < prefixLength) {
            text.append(u'/');
        }
    } else {
        text.truncate(prefixLength); // nobody else holds the last entry: its block serves again
    }
    text.append(name, nameBytes);
    m_entry = TPath(static_cast<TString&&>(text));
}

void TDirectory::iterator::Closer::operator()(DIR* stream) const noexcept
{
    ::closedir(stream);
}

TDirectory::Exception::Exception(TString const& message, TError::ErrorInfo const& errorInfo)
    : KorvelException(message, errorInfo)
{}

TDirectory::Exception::~Exception() = default;

TDirectory::Exception* TDirectory::Exception::Clone() const
{
    return new Exception(*this);
}

void TDirectory::Exception::Throw() const
{
    throw Exception(*this);
}
