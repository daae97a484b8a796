// Any text as configuration: it replaces all thresholds, or it is refused and changes none. An
// object that is written from the bytes gives every category the first severity written for it.

#include "korcoreplatform/fuzz/support/FuzzInput.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/LogConfig.h"
#include "korsys/main/error/KorvelException.h"

#include <array>
#include <optional>

namespace {

constexpr int kCategories = LogDetail::Count + 1;

using Thresholds = std::array<std::optional<TLog::Severity>, kCategories>;

LogDetail::LogDetailEnums Category(int number)
{
    return static_cast<LogDetail::LogDetailEnums>(number);
}

Thresholds ThresholdsOf(LogConfigSettings const& settings)
{
    Thresholds thresholds;
    for (int i = 0; i < kCategories; ++i) {
        TLog::Severity const severity = settings.GetDetailSeverity(Category(i));
        Require(settings.DetailAcceptsSeverity(Category(i), severity) ==
                settings.IsDetailSet(Category(i)));
        if (settings.IsDetailSet(Category(i))) {
            thresholds[static_cast<std::size_t>(i)] = severity;
        }
    }
    return thresholds;
}

/// A text in quotes; its letters change their case or are escaped as the bits of `style` say.
TString Quoted(TString const& text, unsigned style)
{
    TString quoted = u"\"";
    for (int i = 0; i < text.length(); ++i) {
        TString const letter = text.mid(i, 1);
        TString const forms[] = {letter.toUpper(), letter.toLower(), letter,
                                 TString(u"\\u") + TString::number(letter.at(0), 16, 4, u'0')};
        quoted += forms[style >> (i % 4 * 2) & 3];
    }
    return quoted + u"\"";
}

void CheckAnyText(TString const& text)
{
    LogConfigSettings settings{TPath()};
    settings.SetDetailSeverity(LogDetail::Caching, TLog::Severity::Info);
    settings.SetDetailSeverity(Category(-1), TLog::Severity::Info); // no text can name it
    Thresholds const before = ThresholdsOf(settings);
    try {
        settings.InitializeFromString(text);
    } catch (KorvelException const& e) {
        Require(e.GetErrorInfo().GetError().GetName() == u"KorvelException_AutoGen_0x1A36D05F");
        Require(settings.IsDetailSet(Category(-1)));
    }
    if (settings.IsDetailSet(Category(-1))) {
        Require(ThresholdsOf(settings) == before);
        return;
    }
    // It is an object then, which blanks around it do not change.
    LogConfigSettings again{TPath()};
    again.InitializeFromString(TString(u" \n") + text.trimmed().removeBOM() + u"\t");
    Require(ThresholdsOf(again) == ThresholdsOf(settings));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    CheckAnyText(TString::fromUtf8(reinterpret_cast<char const*>(data), static_cast<int>(size)));

    TString text = u"{";
    Thresholds expected;
    for (std::size_t i = 0; i + 3 <= size; i += 3) {
        std::size_t const category = data[i] % kCategories;
        auto const severity = static_cast<TLog::Severity>(data[i + 1] % 8);
        text += (i == 0 ? u"" : u",") +
                Quoted(LogDetail::LogDetailToString(Category(int(category))), data[i + 2]) + u":" +
                Quoted(TLog::SeverityToString(severity), data[i + 2] / 2u);
        if (!expected[category]) {
            expected[category] = severity;
        }
    }
    LogConfigSettings settings{TPath()};
    settings.InitializeFromString(text + u"}");
    Require(ThresholdsOf(settings) == expected);
    return 0;
}
