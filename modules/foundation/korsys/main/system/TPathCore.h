/// A file path as the lowest layers pass it on.

#pragma once

#include "korsys/main/text/TStringCore.h"

/// The text of a path with "/" as separator, kept as it was given. Nothing is normalised and the
/// file system is never asked.
///
/// Thread safety: one object may be read from several threads; a write needs it alone.
class TPathCore
{
public:
    TPathCore() noexcept = default; ///< The empty path.
    explicit TPathCore(TStringCore const& path) : m_path(path) {}

    TStringCore const& GenericString() const noexcept { return m_path; }

private:
    TStringCore m_path;
};

/// Compares the texts, with case.
inline bool operator==(TPathCore const& a, TPathCore const& b)
{
    return a.GenericString() == b.GenericString();
}

inline bool operator!=(TPathCore const& a, TPathCore const& b)
{
    return !(a == b);
}
