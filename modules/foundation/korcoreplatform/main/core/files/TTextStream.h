/// A text stream of Qt that knows this library's texts, line by line.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

#include <QString>
#include <QTextStream>

#include <cstddef>
#include <iterator>
#include <vector>

/// A `QTextStream` with lines as `TString`. Lines come without what ends them, and a text that does
/// not end with a line break has one more line behind its last break.
///
///     QFile file(name);
///     file.open(QIODevice::ReadOnly);
///     TTextStream stream(&file);
///     for (auto line = stream.LinesBegin(); line != stream.LinesEnd(); ++line) {
///         Count(*line);
///     }
///
/// Thread safety: one object must not be used by two threads at once.
class KORCOREPLATFORM_EXPORT TTextStream : public QTextStream
{
public:
    class LineIterator;

    using QTextStream::QTextStream;
    ~TTextStream() override;

    /// The lines from here to the end.
    std::vector<TString> ReadAllLines();

    /// Writes each line and a line break behind it, and flushes after each.
    void WriteLines(std::vector<TString> const& lines);

    /// An iterator on the next line, which it reads, and the one behind the last line.
    LineIterator LinesBegin();
    LineIterator LinesEnd();

    using QTextStream::operator<<;
    TTextStream& operator<<(TTextStream& (*manipulator)(TTextStream&));
    TTextStream& operator<<(TString const& text);
    TTextStream& operator<<(char16_t const* text); ///< Up to the terminating zero; null is empty.
    TTextStream& operator<<(char16_t c);
};

/// Walks through the lines that a stream has not given yet. All iterators of a stream read from the
/// same place, so one is used at a time.
///
/// Ownership: none; the stream lives longer than its iterators.
class KORCOREPLATFORM_EXPORT TTextStream::LineIterator
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = TString;
    using difference_type = std::ptrdiff_t;
    using pointer = TString const*;
    using reference = TString const&;

    /// Reads the first line. For a null stream and for one at its end it is the end iterator.
    explicit LineIterator(QTextStream* stream = nullptr);
    LineIterator(LineIterator const& other) : m_line(other.m_line), m_stream(other.m_stream) {}
    ~LineIterator() = default;

    LineIterator operator=(LineIterator const& other); ///< Gives a copy.

    /// Reads the next line, or becomes the end iterator, which does not move any more. Gives a
    /// copy.
    LineIterator operator++()
    {
        Advance();
        return *this;
    }

    TString const& operator*() const noexcept { return m_line; } ///< Empty at the end.
    TString const* operator->() const noexcept { return &m_line; }

    /// Do both read from the same stream, or are both at the end?
    bool operator==(LineIterator const& other) const noexcept { return m_stream == other.m_stream; }
    bool operator!=(LineIterator const& other) const noexcept { return m_stream != other.m_stream; }

private:
    void Advance();

    TString m_line;
    QTextStream* m_stream; ///< Null at the end.
    QString m_buffer;      ///< Where the stream puts a line: each object its own.
};

/// A line break, and what was written goes to the device: `stream << endl`. Behind anything that is
/// not written by a `TTextStream` operation, `Qt::endl` and `Qt::flush` do the same.
KORCOREPLATFORM_EXPORT TTextStream& endl(TTextStream& stream);
KORCOREPLATFORM_EXPORT TTextStream& flush(TTextStream& stream);
