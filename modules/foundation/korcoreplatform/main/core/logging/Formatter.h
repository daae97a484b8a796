/// Turns log records into lines of JSON.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/Severity.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/string/TString.h"

#include <memory>
#include <string>

namespace TLog {

class Event;
class LineBuffer;

/// Writes one record as one JSON object of printable ASCII, without blanks and line breaks:
///
///     {"ts":"2024-03-02T09:05:03.004","pid":4242,"tid":"1a2b","sev":"info","req":"-","sess":"-",
///     "site":"-","traceid":"-","user":"-","k":"msg","v":"hello"}
///
/// The time is local. "qlid", "l", "a", "e", "v" and "ctx" are there when there is something to
/// tell: the quarantine id, the location, the activity, the error, the value, the context.
///
/// Texts are quoted and end at their first zero unit; what is not printable ASCII is escaped. The
/// pairs of an object are in the order of their names. A null pointer, a number that is not finite,
/// and a value whose `Accept` visits nothing are null.
///
/// An object keeps memory and texts from line to line, so one that is used again is faster than a
/// new one.
///
/// Throws: `std::bad_alloc`; what the `Accept` of a host's value throws; `StringException` with id
/// AutoGen_0xC83B3D89 for a result longer than a text can be, which `AppendLine` still writes.
/// Thread safety: one thread at a time.
class KORCOREPLATFORM_EXPORT Formatter : public ValueVisitor
{
public:
    Formatter();
    Formatter(Formatter const&) = delete;
    Formatter& operator=(Formatter const&) = delete;
    ~Formatter() override;

    // A line. All forms throw `std::bad_function_call` when the callable that tells whether
    // activities are traced (`OptMetrics`) is empty.

    TString operator()(AccessLevel accessLevel, Severity severity, Event const& event);
    TString operator()(Severity severity, Event const& event); ///< For `AccessLevel::Standard`.

    /// Appends the line and a line feed, in UTF-8. `bytes` stays as it is when something throws.
    void AppendLine(std::string& bytes, AccessLevel accessLevel, Severity severity,
                    Event const& event);

    /// The same for the channels of this library.
    void AppendLine(LineBuffer& bytes, AccessLevel accessLevel, Severity severity,
                    Event const& event);

    // Texts of values

    TString operator()(Value& value);
    TString KeyValue(TString const& key, Value& value); ///< "name":text

    // A visited value leaves its text, which stays until the next one.

    void VisitLiteral(Literal& literal) override;
    void VisitObject(Object& object) override;
    void VisitArray(Array& array) override;

    TString GetText() const; ///< Of the value that was visited or given last.

    // Texts of scalars

    TString String(TString const& text);
    TString String(char16_t const* text); ///< Null counts as empty.
    TString Key(TString const& key);      ///< The same as `String`.
    TString Int(long long number);
    TString Double(double number);     ///< Six significant digits, as short as possible: 0.1
    TString Scientific(double number); ///< Two decimals and an exponent: 1.23e+04; zero is 0.
    TString Scientific(unsigned long long number); ///< Of the nearest `double`.
    TString Bool(bool value);
    TString Null();

private:
    class Writer;

    template <class Write>
    TString Take(Write const& write);

    std::unique_ptr<Writer> m_writer;
};

} // namespace TLog
