// Whole files: loading in any encoding, and writing.

#include "korcoreplatform/main/core/files/TFile.h"

#include "korcoreplatform/main/core/files/FillAhead_p.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korcoreplatform/main/string/TTextEncoding.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/LogicException.h"
#include "korsys/main/error/ThrowError.h"
#include "korsys/main/text/TStringErrors_p.h"
#include "korsys/main/text/TextConversion_p.h"
#include "korsys/main/text/Unicode.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t kHeadBytes = 512;

/// What is read at a time where a result has to be filled or converted: it stays in the nearer
/// caches meanwhile. A multiple of every unit's size.
constexpr std::size_t kPieceBytes = 64 * 1024;

constexpr char kErrorPlace[] = "modules/foundation/korcoreplatform/main/core/TFile";
constexpr char kUnknownEncoding[] = "false && \"Unknown encoding\"";

/// As `TFile::Read`, with the file's name in front of a failure's messages.
std::size_t ReadOrExplain(TFile& file, void* to, std::size_t max)
{
    try {
        return static_cast<std::size_t>(file.Read(to, static_cast<long long>(max)));
    } catch (TIO::Exception& e) {
        e.StackMessageFront(TFormat(u"IO error attempting to read from file \"%1\".", file.Path()));
        throw;
    }
}

/// Reads `max` bytes, fewer only when there are no more. A device that had given some bytes when an
/// error met it gives just those; asked again, it tells the error.
std::size_t ReadWhole(TFile& file, char* to, std::size_t max)
{
    std::size_t done = 0;
    while (done != max) {
        std::size_t const got = ReadOrExplain(file, to + done, max - done);
        if (got == 0) {
            break;
        }
        done += got;
    }
    return done;
}

/// Makes `bytes` the `size` bytes that `read(to, max)` gives, or as many as come: it gives fewer
/// than it is asked for only at the end. A container fills what it grows by, which costs next to
/// nothing for as much as the caches hold.
template <class Bytes, class ReadOperation>
void ReadBytes(Bytes& bytes, std::size_t size, ReadOperation const& read)
{
    bytes.reserve(size);
    FillAhead ahead(bytes.data(), size);
    for (std::size_t done = 0; done != size;) {
        std::size_t const wanted = std::min(size - done, kPieceBytes);
        ahead.Reach(bytes.data() + done + wanted);
        bytes.resize(done + wanted);
        std::size_t const got = read(bytes.data() + done, wanted);
        done += got;
        if (got != wanted) {
            bytes.resize(done);
            return;
        }
    }
}

/// A text file that is being loaded: its encoding, and its bytes behind the mark in order.
class TextSource
{
public:
    explicit TextSource(TPath const& path) : m_file(path, TIO::ReadOnly)
    {
        auto const size = static_cast<std::size_t>(m_file.Size());
        if (size == 0) {
            return;
        }
        m_headEnd = ReadWhole(m_file, m_head, std::min(size, kHeadBytes));
        std::int32_t markLength = 0;
        std::tie(m_encoding, markLength) = DetectEncoding(m_head, m_headEnd);
        m_headBegin = static_cast<std::size_t>(markLength);
        m_left = size - std::min(size, m_headBegin); // the file may have grown since it was asked
    }

    EncodingType Encoding() const { return m_encoding; }
    std::size_t BytesLeft() const { return m_left; } ///< By the size that the file had.

    /// Reads up to `max` bytes of those that are left, fewer only when there are no more.
    std::size_t Read(void* to, std::size_t max)
    {
        max = std::min(max, m_left);
        std::size_t const known = std::min(max, m_headEnd - m_headBegin);
        std::memcpy(to, m_head + m_headBegin, known);
        m_headBegin += known;
        char* const rest = static_cast<char*>(to) + known;
        std::size_t const count = known == max ? max : known + ReadWhole(m_file, rest, max - known);
        m_left -= count;
        return count;
    }

private:
    TFile m_file;
    EncodingType m_encoding = EncodingUtf8;
    std::size_t m_left = 0;
    std::size_t m_headBegin = 0; ///< The bytes of the head that were not given out yet.
    std::size_t m_headEnd = 0;
    char m_head[kHeadBytes];
};

/// Hands the bytes of a text to `convert(bytes, n, isLast)` in pieces, so that they are never all
/// in memory beside the text. It answers how many it used up, all of the last piece; the others
/// come again at the start of the next piece. Pieces begin at addresses for units of any size.
template <class Convert>
void ConvertInPieces(TextSource& source, Convert const& convert)
{
    std::size_t const size = std::min(source.BytesLeft(), kPieceBytes);
    std::unique_ptr<char[]> const piece(new char[size]);
    for (std::size_t kept = 0; source.BytesLeft() != 0;) {
        std::size_t const wanted = size - kept;
        std::size_t const got = source.Read(piece.get() + kept, wanted);
        bool const isLast = got != wanted || source.BytesLeft() == 0;
        std::size_t const n = kept + got;
        std::size_t const used = convert(piece.get(), n, isLast);
        if (isLast) {
            return;
        }
        kept = n - used;
        std::memmove(piece.get(), piece.get() + used, kept);
    }
}

/// Where the bytes can be cut without a character being cut, ill-formed parts included: behind
/// them or, when one of the last three begins a character of several bytes, before that one.
std::size_t Utf8Cut(char const* bytes, std::size_t n)
{
    for (std::size_t back = 1; back <= std::min<std::size_t>(n, 3); ++back) {
        if (static_cast<unsigned char>(bytes[n - back]) >= 0xC0) {
            return n - back;
        }
    }
    return n;
}

/// Makes room in an empty text for that many units, or for as many as a text can hold.
FillAhead Reserve(TString& text, std::size_t units)
{
    auto const possible = std::min(units, static_cast<std::size_t>(TString::kMaxLength));
    text.reserve(static_cast<int>(possible));
    return FillAhead(text.data(), possible * sizeof(char16_t));
}

TString ReadUtf8(TextSource& source)
{
    TString text;
    FillAhead ahead = Reserve(text, source.BytesLeft());
    ConvertInPieces(source, [&](char const* bytes, std::size_t n, bool isLast) {
        std::size_t const used = isLast ? n : Utf8Cut(bytes, n);
        int const done = text.length();
        ahead.Reach(text.constData() + done + used);
        TextConversion::Utf8ToUtf16(bytes, used, [&text, done](std::size_t units) {
            TStringManager& storage = text;
            int const length = TStringErrors::CheckedSum(done + static_cast<std::int64_t>(units));
            return storage.resize(length) + done;
        });
        return used;
    });
    text.squeeze(); // there was room for one unit a byte
    return text;
}

TString ReadUtf16(TextSource& source)
{
    std::size_t const units = source.BytesLeft() / sizeof(char16_t);
    int const length = TStringErrors::CheckedSum(static_cast<std::int64_t>(units));
    TString text;
    FillAhead ahead = Reserve(text, units);
    ahead.Reach(text.constData() + units);
    TStringManager& storage = text;
    std::size_t const got = source.Read(storage.resize(length), units * sizeof(char16_t));
    text.truncate(static_cast<int>(got / sizeof(char16_t)));
    return text;
}

TString ReadUtf32(TextSource& source)
{
    TString text;
    ConvertInPieces(source, [&text](char const* bytes, std::size_t n, bool) {
        auto const* const units = reinterpret_cast<char32_t const*>(bytes);
        std::size_t const count = n / sizeof(char32_t);
        text += TString::fromUtf32(units, static_cast<int>(count));
        return count * sizeof(char32_t);
    });
    return text;
}

TString ReadLatin1(TextSource& source)
{
    TString text;
    FillAhead ahead = Reserve(text, source.BytesLeft());
    ConvertInPieces(source, [&](char const* bytes, std::size_t n, bool) {
        ahead.Reach(text.constData() + text.length() + n);
        TextConversion::Latin1ToUtf16(bytes, n, text.extend(static_cast<int>(n)));
        return n;
    });
    return text;
}

/// The text; nothing when the encoding is none of those that are known.
std::optional<TString> ReadText(TextSource& source)
{
    switch (source.Encoding()) {
    case EncodingUtf8:
        return ReadUtf8(source);
    case EncodingUtf16LE:
        return ReadUtf16(source);
    case EncodingUtf32LE:
        return ReadUtf32(source);
    case EncodingLatin1:
        return ReadLatin1(source);
    }
    return std::nullopt;
}

std::string ReadAsUtf8(TextSource& source)
{
    if (source.Encoding() == EncodingUtf8) {
        std::string bytes;
        ReadBytes(bytes, source.BytesLeft(),
                  [&source](char* to, std::size_t max) { return source.Read(to, max); });
        return bytes;
    }
    std::optional<TString> const text = ReadText(source);
    if (!text) {
        ThrowLogicException(kErrorPlace, 172, kUnknownEncoding,
                            KorErrorsError::LogicAssert_0x19E29F4A());
    }
    return text->toStdString();
}

} // namespace

TString TFile::LoadTextFile(TPath const& path, bool normalize)
{
    TextSource source(path);
    std::optional<TString> text = ReadText(source);
    if (!text) {
        ThrowLogicException(kErrorPlace, 244, kUnknownEncoding,
                            KorErrorsError::LogicAssert_0xC629F74E());
    }
    if (normalize) {
        text->dosToUnix();
    }
    return *std::move(text);
}

std::string TFile::LoadUtf8File(TPath const& path, bool normalize)
{
    TextSource source(path);
    std::string utf8 = ReadAsUtf8(source);
    if (normalize) {
        utf8.resize(Unicode::normalizeLineEndings(utf8.data(), utf8.size()));
    }
    return utf8;
}

std::vector<char> TFile::LoadBinaryFile(TPath const& path)
{
    TFile file(path, ReadOnly);
    std::vector<char> bytes;
    ReadBytes(bytes, static_cast<std::size_t>(file.Size()),
              [&file](char* to, std::size_t max) { return ReadWhole(file, to, max); });
    return bytes;
}

std::vector<unsigned char> TFile::LoadUnsignedBinaryFile(TPath const& path)
{
    TFile file(path, ReadOnly);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(file.Size()));
    ReadOrExplain(file, bytes.data(), bytes.size());
    return bytes;
}

void TFile::WriteUnsignedBinaryFile(TPath const& path, std::vector<unsigned char> const& data)
{
    TFile file(path, OpenMode(WriteOnly) | Truncate);
    long long const size = static_cast<long long>(data.size());
    if (file.Write(data.data(), size) != size) {
        ThrowError<Exception>(TFormat(u"IO error, couldn't write to file: '%1'.", path),
                              &KorErrorsError::AutoGen_0x91F378B3);
    }
}
