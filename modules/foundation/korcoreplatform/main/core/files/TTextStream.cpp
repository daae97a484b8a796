#include "korcoreplatform/main/core/files/TTextStream.h"

TTextStream::~TTextStream() = default;

std::vector<TString> TTextStream::ReadAllLines()
{
    std::vector<TString> lines;
    QString line; // its block serves for all lines
    while (!atEnd()) {
        readLineInto(&line);
        lines.emplace_back(line);
    }
    return lines;
}

void TTextStream::WriteLines(std::vector<TString> const& lines)
{
    for (TString const& line : lines) {
        *this << line << endl;
    }
}

TTextStream::LineIterator TTextStream::LinesBegin()
{
    return LineIterator(this);
}

TTextStream::LineIterator TTextStream::LinesEnd()
{
    return LineIterator();
}

TTextStream& TTextStream::operator<<(TTextStream& (*manipulator)(TTextStream&))
{
    return manipulator(*this);
}

TTextStream& TTextStream::operator<<(TString const& text)
{
    *this << text.toQString();
    return *this;
}

TTextStream& TTextStream::operator<<(char16_t const* text)
{
    return *this << TString(text);
}

TTextStream& TTextStream::operator<<(char16_t c)
{
    *this << QChar(c);
    return *this;
}

TTextStream::LineIterator::LineIterator(QTextStream* stream) : m_stream(stream)
{
    Advance();
}

TTextStream::LineIterator TTextStream::LineIterator::operator=(LineIterator const& other)
{
    m_line = other.m_line;
    m_stream = other.m_stream;
    return *this;
}

void TTextStream::LineIterator::Advance()
{
    if (m_stream == nullptr) {
        return;
    }
    if (m_stream->atEnd()) {
        m_line.clear();
        m_stream = nullptr;
        return;
    }
    m_stream->readLineInto(&m_buffer);
    m_line.assign(reinterpret_cast<char16_t const*>(m_buffer.constData()), m_buffer.size());
}

TTextStream& endl(TTextStream& stream)
{
    Qt::endl(stream);
    return stream;
}

TTextStream& flush(TTextStream& stream)
{
    Qt::flush(stream);
    return stream;
}
