#include "JsonWriter.h"

namespace TextCensus {

TString JsonString(TString const& text)
{
    TString json = u"\"";
    for (char16_t const c : text) {
        if (c < u' ') {
            json += u"\\u" + TString::number(c, 16, 4, u'0');
        } else {
            if (c == u'"' || c == u'\\') {
                json += u'\\';
            }
            json += c;
        }
    }
    return json + u'"';
}

void JsonWriter::Key(TString const& name)
{
    StartValue();
    m_text += JsonString(name) + u": ";
    m_isAfterKey = true;
}

void JsonWriter::Text(TString const& text)
{
    StartValue();
    m_text += JsonString(text);
}

void JsonWriter::Number(std::uint64_t number)
{
    StartValue();
    m_text += TString::number(number);
}

void JsonWriter::Begin(char16_t bracket)
{
    StartValue();
    m_text += bracket;
    ++m_depth;
    m_isFirst = true;
}

void JsonWriter::End(char16_t bracket)
{
    --m_depth;
    if (!m_isFirst) {
        StartLine();
    }
    m_text += bracket;
    m_isFirst = false;
}

void JsonWriter::StartValue()
{
    if (m_depth > 0 && !m_isAfterKey) {
        if (!m_isFirst) {
            m_text += u',';
        }
        StartLine();
    }
    m_isFirst = false;
    m_isAfterKey = false;
}

void JsonWriter::StartLine()
{
    m_text += u'\n';
    m_text.append(u' ', 2 * m_depth);
}

} // namespace TextCensus
