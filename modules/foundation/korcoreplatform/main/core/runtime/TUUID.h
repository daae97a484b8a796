/// Universally unique identifiers, with text forms shorter than the usual one.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

#include <QUuid>

#include <cstddef>
#include <cstring>
#include <functional>
#include <type_traits>
#include <vector>

/// The text forms of a `TUUID`. The numbers are fixed: callers may store them.
enum class TUUIDFormatOption : int
{
    Braced = 0,  ///< "{0123ABCD-4567-89AB-CDEF-0123456789AB}", upper case, 38 characters.
    Compact = 1, ///< The 32 digits of `Braced` alone.
    Base36 = 2,  ///< 28 lower-case letters and digits: each 32 bits take seven of them.
    Base64 = 3   ///< 22 characters of `TString::number`'s base 64: each 64 bits take eleven.
};

/// A 128-bit identifier: a value over `QUuid` that converts to it and from it. A new one is null,
/// which means that all its bits are zero.
///
///     TUUID const session = TUUID::CreateUUID();
///     TString const name = session.ToString(TUUIDFormatOption::Base36);
///     assert(TUUID::FromBase36(name) == session);
///
/// Identifiers order by their variant first and then by their fields, as those of Qt do.
///
/// Thread safety: one object may be read from several threads; a write needs it alone. The static
/// functions may be called from any thread.
class KORCOREPLATFORM_EXPORT TUUID
{
    template <class Text, class... Others>
    static constexpr bool kIsOneOf = (std::is_same_v<Text, Others> || ...);

    /// What converts to an identifier as an identifier does to `TString`, so that the way to
    /// compare the two has to be said.
    template <class Text>
    static constexpr bool kIsText =
        kIsOneOf<std::decay_t<Text>, TString, char16_t*, char16_t const*, char*, char const*>;

public:
    TUUID() noexcept = default;
    TUUID(QUuid const& uuid) noexcept : m_uuid(uuid) {}

    /// Reads digits in groups of 8-4-4-4-12 with "-" between them, in any letter case. A brace may
    /// stand before them; what stands behind them is not looked at. Any other text gives the null
    /// identifier, a null pointer and the other text forms included.
    TUUID(char const* text) noexcept;
    TUUID(char16_t const* text) noexcept;
    TUUID(TString const& text) noexcept;
    TUUID(QString const& text);

    bool IsNull() const noexcept { return m_uuid.isNull(); }

    bool operator==(TUUID const& other) const noexcept
    {
        static_assert(sizeof(QUuid) == 16, "nothing but the fields, so they are compared at once");
        return std::memcmp(&m_uuid, &other.m_uuid, sizeof(m_uuid)) == 0;
    }
    bool operator!=(TUUID const& other) const noexcept { return !(*this == other); }

    /// With a text on either side, which is read as the constructor reads it.
    template <class Text, std::enable_if_t<kIsText<Text>, int> = 0>
    bool operator==(Text const& text) const
    {
        return *this == TUUID(text);
    }
    template <class Text, std::enable_if_t<kIsText<Text>, int> = 0>
    bool operator!=(Text const& text) const
    {
        return !(*this == text);
    }
    template <class Text, std::enable_if_t<kIsText<Text>, int> = 0>
    friend bool operator==(Text const& text, TUUID const& id)
    {
        return id == text;
    }
    template <class Text, std::enable_if_t<kIsText<Text>, int> = 0>
    friend bool operator!=(Text const& text, TUUID const& id)
    {
        return !(id == text);
    }

    bool operator<(TUUID const& other) const noexcept { return m_uuid < other.m_uuid; }
    bool operator>(TUUID const& other) const noexcept { return m_uuid > other.m_uuid; }
    bool operator<=(TUUID const& other) const noexcept { return !(*this > other); }
    bool operator>=(TUUID const& other) const noexcept { return !(*this < other); }

    operator QUuid&() noexcept { return m_uuid; }
    operator QUuid const&() const noexcept { return m_uuid; }
    operator TString() const { return ToString(); }

    /// Writes one of the text forms; a number that names none writes `Braced`.
    TString ToString(TUUIDFormatOption format = TUUIDFormatOption::Braced) const;

    std::vector<unsigned char> ToRFC4122() const; ///< Sixteen bytes, each field big-endian.

    static TUUID CreateUUID(); ///< A new random identifier (version 4).

    /// Reads the 28 characters that `ToString(TUUIDFormatOption::Base36)` writes; anything after
    /// them is not looked at. Each group of seven is read by `TString::toUInt`, which takes
    /// either letter case, "+" in the place of a leading zero, and white space around the digits.
    /// Throws: `KorvelException` with id AutoGen_0x318CE3BA when `text` has fewer than 28
    /// characters, AutoGen_0x9B4122E9 when a group cannot be read as a number of 32 bits.
    static TUUID FromBase36(TString const& text);

    /// Reads what `ToRFC4122` writes. Anything but sixteen bytes gives the null identifier.
    static TUUID FromRFC4122(std::vector<unsigned char> const& bytes);
    static TUUID FromRFC4122(unsigned char const* bytes, int size);

private:
    QUuid m_uuid;
};

template <>
struct std::hash<TUUID>
{
    std::size_t operator()(TUUID const& uuid) const noexcept
    {
        return qHash(static_cast<QUuid const&>(uuid), 0);
    }
};
