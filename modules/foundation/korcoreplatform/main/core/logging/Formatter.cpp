#include "korcoreplatform/main/core/logging/Formatter.h"

#include "korcoreplatform/main/core/logging/Event_p.h"
#include "korcoreplatform/main/core/logging/JsonText_p.h"
#include "korcoreplatform/main/core/logging/LineBuffer_p.h"
#include "korcoreplatform/main/core/logging/LineHead_p.h"
#include "korcoreplatform/main/core/logging/LoggingContext.h"
#include "korcoreplatform/main/core/logging/LoggingContext_p.h"
#include "korcoreplatform/main/core/runtime/OptMetrics.h"
#include "korsys/main/text/TStringErrors_p.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>
#include <typeinfo>

namespace TLog {
namespace {

constexpr std::size_t kMaxSeverityBytes = 16; ///< A copy of known size is one move.

struct SeverityText
{
    char bytes[kMaxSeverityBytes];
    std::size_t length;
};

constexpr SeverityText kSeverityTexts[] = {{"trace", 5}, {"debug", 5},    {"info", 4},
                                           {"warn", 4},  {"error", 5},    {"fatal", 5},
                                           {"off", 3},   {"LogDetail", 9}};
constexpr SeverityText kUnknownSeverity = {"", 0};

/// Requires: room for `kMaxSeverityBytes` at `to`.
char* WriteSeverity(char* to, Severity severity)
{
    auto const index = static_cast<std::size_t>(severity);
    bool const isKnown = index < std::size(kSeverityTexts);
    SeverityText const& text = isKnown ? kSeverityTexts[index] : kUnknownSeverity;
    std::memcpy(to, text.bytes, kMaxSeverityBytes);
    return to + text.length;
}

TString ToText(std::string_view ascii)
{
    if (ascii.size() > static_cast<std::size_t>(TString::kMaxLength)) {
        TStringErrors::ThrowTooLong(static_cast<std::int64_t>(ascii.size()));
    }
    return TString::fromLatin1(ascii.data(), static_cast<int>(ascii.size()));
}

} // namespace

/// Does the work of a formatter. Texts are written one behind the other into one buffer; a value of
/// a host's own kind is asked to visit the formatter, which then writes at the same place.
class __attribute__((visibility("hidden"))) Formatter::Writer
{
public:
    explicit Writer(Formatter& formatter) : m_formatter(formatter) {}

    LineBuffer const& GetText() const { return m_text; }

    void WriteLine(LineBuffer& out, AccessLevel accessLevel, Severity severity, Event const& event);

    /// Makes the text of the value the one that was visited last.
    void Render(Value& value);

    /// Hands what `write` appends to the scratch buffer to `use`, and forgets it.
    template <class Write, class Use>
    void Scribble(Write const& write, Use const& use);

    /// Lets `write` write the value that is visited in the place of what the value at hand wrote.
    template <class Write>
    void Visit(Write const& write);

    void WriteLiteral(Literal const& literal);
    void WriteObject(Object const& object);
    void WriteArray(Array const& array);

private:
    struct Named
    {
        TString const* name;
        TString const* text; ///< Null: there is a value instead.
        Value* value;        ///< May be null.
    };

    class Frame;

    bool AreVisitsOverridden() const { return &typeid(m_formatter) != &typeid(Formatter); }

    void WriteValue(Value* value);
    void WriteByVisits(Value& value);
    void WritePairs(TextPairs const& pairs);
    void WriteNamed(std::size_t begin);
    void WriteMember(std::string_view start, Value* value);
    void WriteRecordValue(EventAccess::Record const& record);
    void WriteRecordContext(EventAccess::Record const& record);

    Formatter& m_formatter;
    LineHead m_head;
    LineBuffer m_text;            ///< Of the value visited last.
    LineBuffer m_scratch;         ///< What is handed out as soon as it is written.
    LineBuffer* m_out = &m_text;  ///< Where the text of a value goes,
    std::size_t m_valueStart = 0; ///< and from where on a visit replaces what is there.
    std::vector<Named> m_named;   ///< The pairs of all the objects that are being written.
};

/// Directs the output to another buffer. What was written there is taken back at the end unless it
/// is to be kept.
class Formatter::Writer::Frame
{
public:
    Frame(Writer& writer, LineBuffer& out)
        : m_writer(writer), m_outerOut(writer.m_out), m_outerStart(writer.m_valueStart),
          m_namedCount(writer.m_named.size()), m_start(out.Size())
    {
        writer.m_out = &out;
        writer.m_valueStart = m_start;
    }

    Frame(Frame const&) = delete;
    Frame& operator=(Frame const&) = delete;

    ~Frame()
    {
        if (!m_isKept) {
            m_writer.m_out->Truncate(m_start);
            m_writer.m_named.resize(m_namedCount);
        }
        m_writer.m_out = m_outerOut;
        m_writer.m_valueStart = m_outerStart;
    }

    void Keep() { m_isKept = true; }

    std::string_view GetWritten() const { return m_writer.m_out->View().substr(m_start); }

private:
    Writer& m_writer;
    LineBuffer* m_outerOut;
    std::size_t m_outerStart;
    std::size_t m_namedCount;
    std::size_t m_start;
    bool m_isKept = false;
};

template <class Write, class Use>
void Formatter::Writer::Scribble(Write const& write, Use const& use)
{
    Frame frame(*this, m_scratch);
    write(m_scratch);
    use(frame.GetWritten());
}

template <class Write>
void Formatter::Writer::Visit(Write const& write)
{
    m_out->Truncate(m_valueStart);
    Frame frame(*this, *m_out);
    write();
    frame.Keep();
}

void Formatter::Writer::WriteLine(LineBuffer& out, AccessLevel accessLevel, Severity severity,
                                  Event const& event)
{
    Frame frame(*this, out);
    EventAccess::Record const& record = EventAccess::RecordOf(event);
    char* const head = out.Reserve(LineHead::kMaxBytes + kMaxSeverityBytes);
    char* const end =
        m_head.Write(head, record.timestamp.GetTime(), record.processId, record.threadId);
    out.Commit(WriteSeverity(end, severity));
    out.Append(R"(",)");
    if (accessLevel == AccessLevel::Quarantine) {
        TString const quarantine = QuarantineText();
        if (!quarantine.isEmpty()) {
            out.Append(R"("qlid":)");
            JsonText::AppendString(out, quarantine);
            out.Append(',');
        }
    }
    out.Append(record.attributes->GetJson());
    if (record.tail == RecordTail::Rest) {
        out.Append(R"("k":)");
        JsonText::AppendString(out, record.rest->key);
    } else {
        out.Append(R"("k":"msg")"); // what `GetKey` would say
    }
    if (OptMetrics::IsActivityAndResourceTracingEnabled()) {
        WriteMember(R"(,"l":)", record.GetRest().location.get());
        WriteMember(R"(,"a":)", record.GetRest().activity.get());
    }
    WriteMember(R"(,"e":)", record.GetRest().error.get());
    WriteRecordValue(record);
    if (GetLoggingContextEnabled()) {
        WriteRecordContext(record);
    }
    out.Append('}');
    frame.Keep();
}

void Formatter::Writer::Render(Value& value)
{
    // A host's value may have another one rendered while it is itself.
    Scribble([&](LineBuffer&) { WriteValue(&value); },
             [&](std::string_view text) {
                 m_text.Truncate(0);
                 m_text.Append(text);
             });
}

void Formatter::Writer::WriteMember(std::string_view start, Value* value)
{
    if (value != nullptr) {
        m_out->Append(start);
        WriteValue(value);
    }
}

void Formatter::Writer::WriteRecordValue(EventAccess::Record const& record)
{
    constexpr std::string_view kStart = R"(,"v":)";
    if (AreVisitsOverridden()) {
        WriteMember(kStart, record.GetValue().get());
    } else if (record.tail == RecordTail::PlainText) {
        m_out->Append(kStart);
        JsonText::AppendPlain(*m_out, record.PlainText());
    } else if (record.tail == RecordTail::Text) {
        m_out->Append(kStart);
        JsonText::AppendString(*m_out, record.Text().data(), record.tailLength);
    } else if (auto const* shared = std::get_if<std::shared_ptr<Value>>(&record.rest->value)) {
        WriteMember(kStart, shared->get());
    } else {
        m_out->Append(kStart);
        if (auto const* text = std::get_if<TString>(&record.rest->value)) {
            JsonText::AppendString(*m_out, *text);
        } else {
            WritePairs(std::get<TextPairs>(record.rest->value));
        }
    }
}

void Formatter::Writer::WriteRecordContext(EventAccess::Record const& record)
{
    constexpr std::string_view kStart = R"(,"ctx":)";
    auto const* const pairs = std::get_if<TextPairs>(&record.GetRest().context);
    if (pairs == nullptr || AreVisitsOverridden()) {
        WriteMember(kStart, record.GetContext().get());
    } else {
        m_out->Append(kStart);
        WritePairs(*pairs);
    }
}

/// The library's own kinds are written at once, which is the same as to visit them.
void Formatter::Writer::WriteValue(Value* value)
{
    if (value == nullptr) {
        m_out->Append(JsonText::kNull);
        return;
    }
    std::type_info const* const kind = AreVisitsOverridden() ? nullptr : &typeid(*value);
    if (kind == &typeid(Literal)) {
        WriteLiteral(static_cast<Literal const&>(*value));
    } else if (kind == &typeid(Object)) {
        WriteObject(static_cast<Object const&>(*value));
    } else if (kind == &typeid(Array)) {
        WriteArray(static_cast<Array const&>(*value));
    } else {
        WriteByVisits(*value);
    }
}

void Formatter::Writer::WriteByVisits(Value& value)
{
    Frame frame(*this, *m_out);
    value.Accept(m_formatter);
    if (frame.GetWritten().empty()) {
        m_out->Append(JsonText::kNull);
    }
    frame.Keep();
}

void Formatter::Writer::WriteLiteral(Literal const& literal)
{
    switch (literal.GetType()) {
    case Literal::StringType:
        JsonText::AppendString(*m_out, literal.GetString());
        break;
    case Literal::IntType:
        JsonText::AppendInt(*m_out, literal.GetInt());
        break;
    case Literal::DoubleType:
        JsonText::AppendDouble(*m_out, literal.GetDouble());
        break;
    case Literal::ScientificType:
        JsonText::AppendScientific(*m_out, literal.GetDouble());
        break;
    case Literal::BoolType:
        m_out->Append(JsonText::TextOf(literal.GetBool()));
        break;
    default:
        m_out->Append(JsonText::kNull);
    }
}

void Formatter::Writer::WriteObject(Object const& object)
{
    std::size_t const begin = m_named.size();
    for (auto const& [name, value] : object.GetValues()) {
        m_named.push_back({&name, nullptr, value.get()});
    }
    WriteNamed(begin);
}

void Formatter::Writer::WritePairs(TextPairs const& pairs)
{
    std::size_t const begin = m_named.size();
    for (auto const& [name, text] : pairs) {
        m_named.push_back({&name, &text, nullptr});
    }
    WriteNamed(begin);
}

/// Writes the pairs from `begin` on as an object and removes them.
void Formatter::Writer::WriteNamed(std::size_t begin)
{
    std::sort(m_named.begin() + static_cast<std::ptrdiff_t>(begin), m_named.end(),
              [](Named const& a, Named const& b) { return *a.name < *b.name; });
    std::size_t const end = m_named.size();
    m_out->Append('{');
    for (std::size_t i = begin; i != end; ++i) {
        Named const named = m_named[i]; // a copy: objects inside add theirs behind it
        if (i != begin) {
            m_out->Append(',');
        }
        JsonText::AppendString(*m_out, *named.name);
        m_out->Append(':');
        if (named.text != nullptr) {
            JsonText::AppendString(*m_out, *named.text);
        } else {
            WriteValue(named.value);
        }
    }
    m_out->Append('}');
    m_named.resize(begin);
}

void Formatter::Writer::WriteArray(Array const& array)
{
    bool isFirst = true;
    m_out->Append('[');
    for (std::shared_ptr<Value> const& value : array.GetValues()) {
        if (!isFirst) {
            m_out->Append(',');
        }
        isFirst = false;
        WriteValue(value.get());
    }
    m_out->Append(']');
}

Formatter::Formatter() : m_writer(std::make_unique<Writer>(*this)) {}

Formatter::~Formatter() = default;

TString Formatter::operator()(AccessLevel accessLevel, Severity severity, Event const& event)
{
    return Take([&](LineBuffer& out) { m_writer->WriteLine(out, accessLevel, severity, event); });
}

TString Formatter::operator()(Severity severity, Event const& event)
{
    return (*this)(AccessLevel::Standard, severity, event);
}

void Formatter::AppendLine(std::string& bytes, AccessLevel accessLevel, Severity severity,
                           Event const& event)
{
    m_writer->Scribble([&](LineBuffer& out) { AppendLine(out, accessLevel, severity, event); },
                       [&](std::string_view line) { bytes.append(line); });
}

void Formatter::AppendLine(LineBuffer& bytes, AccessLevel accessLevel, Severity severity,
                           Event const& event)
{
    m_writer->WriteLine(bytes, accessLevel, severity, event);
    bytes.Append('\n');
}

TString Formatter::operator()(Value& value)
{
    m_writer->Render(value);
    return GetText();
}

TString Formatter::KeyValue(TString const& key, Value& value)
{
    m_writer->Render(value);
    return Take([&](LineBuffer& out) {
        JsonText::AppendString(out, key);
        out.Append(':');
        out.Append(m_writer->GetText().View());
    });
}

void Formatter::VisitLiteral(Literal& literal)
{
    m_writer->Visit([&] { m_writer->WriteLiteral(literal); });
}

void Formatter::VisitObject(Object& object)
{
    m_writer->Visit([&] { m_writer->WriteObject(object); });
}

void Formatter::VisitArray(Array& array)
{
    m_writer->Visit([&] { m_writer->WriteArray(array); });
}

TString Formatter::GetText() const
{
    return ToText(m_writer->GetText().View());
}

TString Formatter::String(TString const& text)
{
    return Take([&](LineBuffer& out) { JsonText::AppendString(out, text); });
}

TString Formatter::String(char16_t const* text)
{
    std::u16string_view const units = text == nullptr ? u"" : text;
    return Take([&](LineBuffer& out) { JsonText::AppendString(out, units.data(), units.size()); });
}

TString Formatter::Key(TString const& key)
{
    return String(key);
}

TString Formatter::Int(long long number)
{
    return Take([&](LineBuffer& out) { JsonText::AppendInt(out, number); });
}

TString Formatter::Double(double number)
{
    return Take([&](LineBuffer& out) { JsonText::AppendDouble(out, number); });
}

TString Formatter::Scientific(double number)
{
    return Take([&](LineBuffer& out) { JsonText::AppendScientific(out, number); });
}

TString Formatter::Scientific(unsigned long long number)
{
    return Scientific(static_cast<double>(number));
}

TString Formatter::Bool(bool value)
{
    return ToText(JsonText::TextOf(value));
}

TString Formatter::Null()
{
    return ToText(JsonText::kNull);
}

template <class Write>
TString Formatter::Take(Write const& write)
{
    TString text;
    m_writer->Scribble(write, [&](std::string_view written) { text = ToText(written); });
    return text;
}

} // namespace TLog
