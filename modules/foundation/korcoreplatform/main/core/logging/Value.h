/// The tree of values that a log record carries.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

#include <memory>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace TLog {

class Array;
class Literal;
class Object;

/// Does something for each kind of value; see `Value::Accept`.
class KORCOREPLATFORM_EXPORT ValueVisitor
{
public:
    virtual ~ValueVisitor();

    virtual void VisitLiteral(Literal& literal) = 0;
    virtual void VisitObject(Object& object) = 0;
    virtual void VisitArray(Array& array) = 0;

protected:
    ValueVisitor() = default;
    ValueVisitor(ValueVisitor const&) = default;
    ValueVisitor& operator=(ValueVisitor const&) = default;
};

/// A value of a record: a literal, an object or an array. Records share their values, so a value
/// does not change any more once a record has it.
///
/// Thread safety: one value may be read from several threads; a write needs it alone.
class KORCOREPLATFORM_EXPORT Value
{
public:
    virtual ~Value();

    virtual std::shared_ptr<Value> Clone() const = 0; ///< A deep copy.

    /// Calls the operation of `visitor` for this kind of value.
    virtual void Accept(ValueVisitor& visitor) = 0;

protected:
    Value() = default;
    Value(Value const&) = default;
    Value(Value&&) = default;
    Value& operator=(Value const&) = default;
    Value& operator=(Value&&) = default;
};

/// A text, a number, a truth value or nothing.
class KORCOREPLATFORM_EXPORT Literal : public Value
{
public:
    enum Type : int
    {
        StringType = 0,
        IntType = 1,
        DoubleType = 2,     ///< Written with six significant digits, as short as possible.
        ScientificType = 3, ///< Written with two decimals and an exponent.
        BoolType = 4,
        NullType = 5
    };

    enum Notation : int
    {
        General = 0,
        Scientific = 1
    };

    Literal() noexcept; ///< Null.
    explicit Literal(TString const& text) noexcept;
    explicit Literal(TString&& text) noexcept;
    explicit Literal(long long number) noexcept;
    explicit Literal(bool value) noexcept;
    explicit Literal(double number, Notation notation = General) noexcept;

    /// A pointer would become a truth value, another integer any of the kinds: say
    /// `Literal::String`, `Literal::Int`.
    template <class Other, class = std::enable_if_t<std::is_pointer_v<std::decay_t<Other>> ||
                                                    (std::is_integral_v<Other> &&
                                                     !std::is_same_v<Other, long long> &&
                                                     !std::is_same_v<Other, bool>)>>
    explicit Literal(Other) = delete;

    static std::shared_ptr<Value> String(TString const& text);
    static std::shared_ptr<Value> String(TString&& text);
    static std::shared_ptr<Value> Int(long long number);
    static std::shared_ptr<Value> Double(double number, Notation notation = General);
    static std::shared_ptr<Value> Bool(bool value);
    static std::shared_ptr<Value> Null();

    int GetType() const noexcept { return m_type; } ///< One of `Type`.

    // Empty, zero or false when the literal is of another type.
    TString const& GetString() const noexcept { return m_text; }
    long long GetInt() const noexcept { return m_type == IntType ? m_number.integer : 0; }
    double GetDouble() const noexcept;
    bool GetBool() const noexcept { return m_type == BoolType && m_number.truth; }

    std::shared_ptr<Value> Clone() const override;
    void Accept(ValueVisitor& visitor) override;

private:
    union Number
    {
        long long integer;
        double floating;
        bool truth;
    };

    Type m_type;
    Number m_number; ///< The member of `m_type`; unused for a text and for null.
    TString m_text;  ///< Empty unless the type is `StringType`.
};

/// Values with names. The line of a record writes them in the order of their names.
class KORCOREPLATFORM_EXPORT Object : public Value
{
public:
    using Map = std::unordered_map<TString, std::shared_ptr<Value>>;

    Object() = default;
    explicit Object(Map const& values);
    explicit Object(Map&& values) noexcept;

    Map const& GetValues() const noexcept { return m_values; }
    Map& GetValues() noexcept { return m_values; }
    void SetValues(Map values) noexcept;

    /// Adds the pairs whose names are not there yet.
    void AppendValues(Map const& values);

    std::shared_ptr<Value> Clone() const override;
    void Accept(ValueVisitor& visitor) override;

    static std::shared_ptr<Object> Make(Map const& values);
    static std::shared_ptr<Object> Make(Map&& values);

    /// Every text becomes a text literal.
    static std::shared_ptr<Object> Make(std::unordered_map<TString, TString> const& texts);

private:
    Map m_values;
};

/// Values in order.
class KORCOREPLATFORM_EXPORT Array : public Value
{
public:
    using List = std::vector<std::shared_ptr<Value>>;

    Array() = default;
    explicit Array(List const& values);
    explicit Array(List&& values) noexcept;

    List const& GetValues() const noexcept { return m_values; }
    List& GetValues() noexcept { return m_values; }
    void SetValues(List values) noexcept;

    std::shared_ptr<Value> Clone() const override;
    void Accept(ValueVisitor& visitor) override;

    static std::shared_ptr<Array> Make(List const& values);
    static std::shared_ptr<Array> Make(List&& values);

private:
    List m_values;
};

} // namespace TLog
