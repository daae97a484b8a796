/// Text encodings: finds out which one some bytes use, and turns the bytes into text.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

#include <cstdint>
#include <utility>
#include <vector>

/// The encodings that are told apart. The numbers are fixed: callers may store them.
enum EncodingType : std::int32_t
{
    EncodingUtf8 = 1,
    EncodingUtf16LE = 2, ///< Little-endian; the big-endian forms are not known.
    EncodingUtf32LE = 3,
    EncodingLatin1 = 4 ///< ISO 8859-1.
};

/// Finds the encoding of a text from its first bytes and tells how many bytes of byte-order mark
/// (0, 2, 3 or 4) it starts with.
///
/// A mark decides. Without one, an XML declaration does: by the name it gives for its encoding
/// ("utf-8", "utf-16le", "utf-32le", "iso-8859-1" in any letter case) when it is written in ASCII,
/// by its form when it is written in UTF-16 or UTF-32. The declaration has to lie in the bytes as a
/// whole. All else is UTF-8, null data included.
///
/// A declaration in UTF-16 counts from 11 bytes on and one in UTF-32 from 21: one byte more than
/// its first five characters take.
/// Thread safety: may be called from any thread.
KORCOREPLATFORM_EXPORT std::pair<EncodingType, std::int32_t> DetectEncoding(void const* data,
                                                                            unsigned long size);

/// Turns a text that arrives in pieces of bytes into `TString`.
///
///     TTextEncoding encoding(firstPiece);
///     TString text = encoding.ToTString(firstPiece);
///     text += encoding.ToTString(secondPiece);
///
/// Made from the first piece, then given every piece, the first included; only the first loses its
/// byte-order mark. A character whose bytes lie in two pieces is not put together.
///
/// Thread safety: one object must not be used by two threads at once.
class KORCOREPLATFORM_EXPORT TTextEncoding
{
public:
    TTextEncoding(void const* data, unsigned long size);
    explicit TTextEncoding(std::vector<char> const& data);
    explicit TTextEncoding(std::vector<unsigned char> const& data);

    EncodingType Encoding() const { return m_encoding; }
    std::int32_t BOMLength() const { return m_bomLength; } ///< In bytes: 0, 2, 3 or 4.

    /// The text of one piece. Bytes that the encoding does not allow become U+FFFD; bytes at the
    /// end that are no whole UTF-16 or UTF-32 unit are dropped.
    ///
    /// A piece that ends with a zero character ends at its first zero character; in any other,
    /// zeros are characters like all. Empty or null data is the empty text and does not count as
    /// the first piece; a first piece that is shorter than its mark is empty too. Throws:
    /// `StringException` with id AutoGen_0xC83B3D89 for a piece of more bytes (UTF-8, Latin-1) or
    /// units (the others) than a text can hold units; `std::bad_alloc`.
    TString ToTString(void const* data, unsigned long size);
    TString ToTString(std::vector<char> const& data);
    TString ToTString(std::vector<unsigned char> const& data);

private:
    EncodingType m_encoding;
    std::int32_t m_bomLength;
    bool m_bomSkipped = false; ///< Has the first piece been converted?
};

/// Decodes bytes up to the zero with the codec that Qt knows by `encodingName`; as UTF-8 when it
/// knows none, or the name is null or empty. Null data is the empty text.
///
/// `failed` (may be null) becomes true when the codec could not decode some bytes and false when it
/// could; without a codec or without data it is not written.
/// Throws: `StringException` with id AutoGen_0xC83B3D89 for more bytes than a text can hold units;
/// `std::bad_alloc`.
/// Thread safety: may be called from any thread.
KORCOREPLATFORM_EXPORT TString TStringFromEncoding(char const* data, char const* encodingName,
                                                   bool* failed = nullptr);
