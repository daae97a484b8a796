#include "korcoreplatform/main/core/logging/Value.h"

#include <utility>

namespace {

std::shared_ptr<TLog::Value> CloneOf(std::shared_ptr<TLog::Value> const& value)
{
    return value == nullptr ? nullptr : value->Clone();
}

} // namespace

namespace TLog {

ValueVisitor::~ValueVisitor() = default;

Value::~Value() = default;

Literal::Literal() noexcept : m_type(NullType), m_number{0} {}

Literal::Literal(TString const& text) noexcept : m_type(StringType), m_number{0}, m_text(text) {}

Literal::Literal(TString&& text) noexcept : m_type(StringType), m_number{0}, m_text(std::move(text))
{}

Literal::Literal(long long number) noexcept : m_type(IntType), m_number{number} {}

Literal::Literal(bool value) noexcept : m_type(BoolType)
{
    m_number.truth = value;
}

Literal::Literal(double number, Notation notation) noexcept
    : m_type(notation == Scientific ? ScientificType : DoubleType)
{
    m_number.floating = number;
}

std::shared_ptr<Value> Literal::String(TString const& text)
{
    return std::make_shared<Literal>(text);
}

std::shared_ptr<Value> Literal::String(TString&& text)
{
    return std::make_shared<Literal>(std::move(text));
}

std::shared_ptr<Value> Literal::Int(long long number)
{
    return std::make_shared<Literal>(number);
}

std::shared_ptr<Value> Literal::Double(double number, Notation notation)
{
    return std::make_shared<Literal>(number, notation);
}

std::shared_ptr<Value> Literal::Bool(bool value)
{
    return std::make_shared<Literal>(value);
}

std::shared_ptr<Value> Literal::Null()
{
    return std::make_shared<Literal>();
}

double Literal::GetDouble() const noexcept
{
    return m_type == DoubleType || m_type == ScientificType ? m_number.floating : 0.0;
}

std::shared_ptr<Value> Literal::Clone() const
{
    return std::make_shared<Literal>(*this);
}

void Literal::Accept(ValueVisitor& visitor)
{
    visitor.VisitLiteral(*this);
}

Object::Object(Map const& values) : m_values(values) {}

Object::Object(Map&& values) noexcept : m_values(std::move(values)) {}

void Object::SetValues(Map values) noexcept
{
    m_values = std::move(values);
}

void Object::AppendValues(Map const& values)
{
    m_values.insert(values.begin(), values.end());
}

std::shared_ptr<Value> Object::Clone() const
{
    Map values;
    values.reserve(m_values.size());
    for (auto const& [name, value] : m_values) {
        values.emplace(name, CloneOf(value));
    }
    return Make(std::move(values));
}

void Object::Accept(ValueVisitor& visitor)
{
    visitor.VisitObject(*this);
}

std::shared_ptr<Object> Object::Make(Map const& values)
{
    return std::make_shared<Object>(values);
}

std::shared_ptr<Object> Object::Make(Map&& values)
{
    return std::make_shared<Object>(std::move(values));
}

std::shared_ptr<Object> Object::Make(std::unordered_map<TString, TString> const& texts)
{
    Map values;
    values.reserve(texts.size());
    for (auto const& [name, text] : texts) {
        values.emplace(name, Literal::String(text));
    }
    return Make(std::move(values));
}

Array::Array(List const& values) : m_values(values) {}

Array::Array(List&& values) noexcept : m_values(std::move(values)) {}

void Array::SetValues(List values) noexcept
{
    m_values = std::move(values);
}

std::shared_ptr<Value> Array::Clone() const
{
    List values;
    values.reserve(m_values.size());
    for (std::shared_ptr<Value> const& value : m_values) {
        values.push_back(CloneOf(value));
    }
    return Make(std::move(values));
}

void Array::Accept(ValueVisitor& visitor)
{
    visitor.VisitArray(*this);
}

std::shared_ptr<Array> Array::Make(List const& values)
{
    return std::make_shared<Array>(values);
}

std::shared_ptr<Array> Array::Make(List&& values)
{
    return std::make_shared<Array>(std::move(values));
}

} // namespace TLog
