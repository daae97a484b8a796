/// Writes JSON.

#pragma once

#include "korcoreplatform/main/string/TString.h"

#include <cstdint>

namespace TextCensus {

/// Builds one indented JSON value. The calls follow the shape of the value; that they fit together
/// is up to the caller.
///
///     JsonWriter json;
///     json.BeginObject();
///     json.Key(u"files");
///     json.Number(3);
///     json.EndObject();
class JsonWriter
{
public:
    void BeginObject() { Begin(u'{'); }
    void EndObject() { End(u'}'); }
    void BeginArray() { Begin(u'['); }
    void EndArray() { End(u']'); }
    void Key(TString const& name);
    void Text(TString const& text);
    void Number(std::uint64_t number);

    TString const& Result() const { return m_text; }

private:
    void Begin(char16_t bracket);
    void End(char16_t bracket);
    void StartValue();
    void StartLine();

    TString m_text;
    int m_depth = 0;
    bool m_isFirst = true; ///< Nothing stands yet in the innermost object or array.
    bool m_isAfterKey = false;
};

/// The text as a JSON string, quotes included.
TString JsonString(TString const& text);

} // namespace TextCensus
