/// The entries of one directory.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korsys/main/error/KorvelException.h"

#include <cstddef>
#include <iterator>
#include <memory>

#include <dirent.h>

/// Lists a directory: each entry is the directory's path joined with the entry's name, without "."
/// and "..", in the order in which the system has them. Entries of subdirectories are not listed.
///
///     for (TPath const& entry : TDirectory(u"/var/log")) { ... } // /var/log/app.log, ...
///
/// Entries that come or go during a listing may or may not be in it; one that is in it may be gone
/// by then. A listing that the system breaks off ends like any other. Names are UTF-8; a name with
/// other bytes has U+FFFD in their place, and its path leads nowhere.
///
/// Thread safety: one object may be read from several threads; a write needs it alone. An iterator
/// serves one thread at a time.
class KORCOREPLATFORM_EXPORT TDirectory
{
public:
    class Exception;
    class iterator;

    explicit TDirectory(TPath const& path) noexcept : m_path(path) {} ///< The system is not asked.

    TPath const& path() const noexcept { return m_path; }

    /// Throws: as `iterator(TPath const&)`.
    iterator begin() const;
    iterator end() const noexcept;

    /// Whether the directory has no entries.
    /// Throws: as `begin`.
    bool isEmpty() const;

private:
    TPath m_path;
};

/// A position in the listing of a directory, which one iterator passes through once. It cannot be
/// copied: made for `for`, not for the algorithms of the standard library. Links are listed as what
/// they are called; `IsSymlink` tells them before a walk follows them.
///
/// Ownership: the iterator holds the open directory until the listing ends, `close` or its own end.
/// An iterator that was moved from is at the end.
class KORCOREPLATFORM_EXPORT TDirectory::iterator
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = TPath;
    using difference_type = std::ptrdiff_t;
    using pointer = TPath const*;
    using reference = TPath;

    iterator() noexcept = default; ///< The end of every listing.

    /// Opens the directory and goes to its first entry.
    /// Throws: `TDirectory::Exception` with id AutoGen_0xF0366EE6 when there is no such directory,
    /// AutoGen_0x798E13C2 when it cannot be opened.
    explicit iterator(TPath const& directory);

    iterator(iterator&& other) noexcept = default;
    iterator& operator=(iterator&& other) noexcept = default;
    ~iterator();

    /// Goes to the next entry; behind the last one it closes the directory and is at the end.
    /// Throws: `TDirectory::Exception` with id AutoGen_0x027437A0 at the end.
    iterator& operator++();

    /// The path of the entry.
    /// Throws: `TDirectory::Exception` with id AutoGen_0x7DF53CA6 at the end.
    TPath operator*() const;

    /// Are both at the end? Iterators with an entry are never equal, not even one to itself: all
    /// that can be asked is whether one is at the end.
    bool operator==(iterator const& other) const noexcept { return !m_stream && !other.m_stream; }
    bool operator!=(iterator const& other) const noexcept { return !(*this == other); }

    /// Ends the listing; the iterator is then at the end.
    void close() noexcept;

private:
    struct Closer
    {
        void operator()(DIR* stream) const noexcept;
    };

    void SetEntry(char const* name);

    TPath m_directory;
    TPath m_entry;                         ///< Empty at the end.
    std::unique_ptr<DIR, Closer> m_stream; ///< Null at the end.
};

/// What goes wrong with the listing of a directory.
class KORCOREPLATFORM_EXPORT TDirectory::Exception : public KorvelException
{
public:
    Exception(TString const& message, TError::ErrorInfo const& errorInfo);
    Exception(Exception const&) noexcept = default;
    Exception& operator=(Exception const&) noexcept = default;
    ~Exception() override;

    Exception* Clone() const override;
    [[noreturn]] void Throw() const override;
};
