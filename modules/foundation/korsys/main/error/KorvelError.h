/// The identity of an error: a number and the id string that spells it.

#pragma once

#include "korsys/main/KorSysExport.h"
#include "korsys/main/text/TStringCore.h"

/// Names one place in the product that reports a failure. The id string reads category, "_", kind,
/// "_0x" and the number as eight upper-case hexadecimal digits: "TIOException_AutoGen_0x3DE8E9E4".
/// The identities of this product come from the factories of `KorErrorsError`.
///
/// Thread safety: one object may be read from several threads; a write needs it alone.
class KORSYS_EXPORT KorvelError
{
public:
    /// Requires: the digits in `name` spell `id`.
    static KorvelError MakeError(unsigned int id, TStringCore name);

    unsigned int GetId() const noexcept { return m_id; }
    TStringCore const& GetName() const noexcept { return m_name; }

private:
    KorvelError(unsigned int id, TStringCore&& name) noexcept;

    unsigned int m_id;
    TStringCore m_name;
};

/// Errors are the same when their numbers are: no two share one.
inline bool operator==(KorvelError const& a, KorvelError const& b) noexcept
{
    return a.GetId() == b.GetId();
}

inline bool operator!=(KorvelError const& a, KorvelError const& b) noexcept
{
    return !(a == b);
}
