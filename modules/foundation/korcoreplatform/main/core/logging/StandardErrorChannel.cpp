#include "korcoreplatform/main/core/logging/StandardErrorChannel.h"

#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/main/core/logging/TimeText_p.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/core/logging/WriteAll_p.h"
#include "korcoreplatform/main/string/TString.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

namespace TLog {
namespace {

constexpr std::size_t kSeverityWidth = 5;

/// What a terminal shows the severity in; empty: as ordinary text.
std::string_view ColourOf(Severity severity)
{
    constexpr std::string_view kColours[] = {"\x1b[2m",  "\x1b[2m",    "",
                                             "\x1b[33m", "\x1b[1;31m", "\x1b[1;31m"};
    auto const index = static_cast<std::size_t>(severity);
    return index < std::size(kColours) ? kColours[index] : std::string_view();
}

bool IsControl(char16_t unit)
{
    return unit < u' ' || (unit >= 0x7f && unit <= 0x9f);
}

void AppendEscape(std::string& line, char16_t control)
{
    constexpr char kDigits[] = "0123456789abcdef";
    if (control == u'\n') {
        line += "\\n";
    } else if (control == u'\t') {
        line += "\\t";
    } else {
        line += "\\u00";
        line += kDigits[control >> 4];
        line += kDigits[control & 0xf];
    }
}

/// `alsoEscaped` are printable characters.
void AppendText(std::string& line, TString const& text, std::u16string_view alsoEscaped = {})
{
    int shown = 0;
    for (int i = 0; i < text.length(); ++i) {
        char16_t const unit = text.constData()[i];
        bool const isEscaped = alsoEscaped.find(unit) != std::u16string_view::npos;
        if (!isEscaped && !IsControl(unit)) {
            continue;
        }
        line += text.mid(shown, i - shown).toStdString();
        shown = i + 1;
        if (isEscaped) {
            line += '\\';
            line += static_cast<char>(unit);
        } else {
            AppendEscape(line, unit);
        }
    }
    line += text.mid(shown).toStdString();
}

void AppendWord(std::string& line, TString const& text)
{
    std::u16string_view const units(text.constData(), static_cast<std::size_t>(text.length()));
    if (!units.empty() && units.find_first_of(u" \"=\\") == std::u16string_view::npos) {
        AppendText(line, text);
        return;
    }
    line += '"';
    AppendText(line, text, u"\"\\");
    line += '"';
}

void AppendValue(std::string& line, Value* value)
{
    auto const* const literal = dynamic_cast<Literal const*>(value);
    if (literal != nullptr && literal->GetType() == Literal::StringType) {
        AppendWord(line, literal->GetString());
    } else if (value == nullptr) {
        line += "null";
    } else {
        line += Formatter()(*value).toStdString();
    }
}

/// The pairs of an object, any other value as it is, each behind a blank; nothing for null.
void AppendPairs(std::string& line, Value* value)
{
    auto const* const object = dynamic_cast<Object const*>(value);
    if (object == nullptr) {
        if (value != nullptr) {
            line += ' ';
            AppendValue(line, value);
        }
        return;
    }
    std::vector<Object::Map::value_type const*> pairs;
    for (Object::Map::value_type const& pair : object->GetValues()) {
        pairs.push_back(&pair);
    }
    std::sort(pairs.begin(), pairs.end(),
              [](auto const* a, auto const* b) { return a->first < b->first; });
    for (Object::Map::value_type const* const pair : pairs) {
        line += ' ';
        AppendWord(line, pair->first);
        line += '=';
        AppendValue(line, pair->second.get());
    }
}

void AppendHead(std::string& line, Severity severity, EventTime time, bool isColoured)
{
    SplitTime const split(time);
    char text[kMaxTimeBytes];
    char* end = WriteSecond(text, split.second, true);
    *end++ = '.';
    line.append(text, WriteMilliseconds(end, split.milliseconds));
    line += ' ';

    std::string_view const colour = isColoured ? ColourOf(severity) : std::string_view();
    std::string const name = SeverityToString(severity).toStdString();
    line += colour;
    line += name;
    line += colour.empty() ? "" : "\x1b[0m";
    line.append(std::max(kSeverityWidth, name.size()) - name.size() + 1, ' ');
}

} // namespace

StandardErrorChannel::StandardErrorChannel()
    : m_isColoured(::isatty(STDERR_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr)
{}

StandardErrorChannel::~StandardErrorChannel() = default;

void StandardErrorChannel::Append(Severity severity, Event const& event)
{
    Append(AccessLevel::Standard, severity, event);
}

void StandardErrorChannel::Append(AccessLevel, Severity severity, Event const& event)
{
    std::string line;
    AppendHead(line, severity, event.GetTimestamp().GetTime(), m_isColoured);
    std::shared_ptr<Value> const value = event.GetValue();
    auto const* const literal = dynamic_cast<Literal const*>(value.get());
    if (event.GetKey() == u"msg" && literal != nullptr &&
        literal->GetType() == Literal::StringType) {
        AppendText(line, literal->GetString());
    } else {
        AppendText(line, event.GetKey());
        AppendPairs(line, value.get());
    }
    AppendPairs(line, event.GetError().get());
    line += '\n';
    std::size_t const written = WriteAll(STDERR_FILENO, line);
    m_counters.bytesWritten += written;
    m_counters.lostRecords += written < line.size();
}

} // namespace TLog
