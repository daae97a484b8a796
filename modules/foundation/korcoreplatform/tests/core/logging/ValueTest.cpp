#include "korcoreplatform/main/core/logging/Value.h"

#include "korcoreplatform/tests/support/KorTest.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>
#include <unordered_map>

namespace {

using TLog::Array;
using TLog::Literal;
using TLog::Object;

static_assert(!std::is_constructible_v<Literal, char16_t const*>, "would be a truth value");
static_assert(!std::is_constructible_v<Literal, int>, "could be any kind of number");

Literal const& AsLiteral(std::shared_ptr<TLog::Value> const& value)
{
    return dynamic_cast<Literal const&>(*value);
}

TEST(ValueTest, ALiteralHasOneTypeAndItsMemberAlone)
{
    struct Case
    {
        int line;
        std::shared_ptr<TLog::Value> value;
        int type;
        char16_t const* text;
        long long integer;
        double floating;
        bool truth;
    };
    auto const otherNotation = static_cast<Literal::Notation>(7);
    Case const cases[] = {
        {__LINE__, Literal::String(u"one"), 0, u"one", 0, 0, false},
        {__LINE__, Literal::Int(-7), 1, u"", -7, 0, false},
        {__LINE__, Literal::Double(0.5), 2, u"", 0, 0.5, false},
        {__LINE__, Literal::Double(0.5, otherNotation), 2, u"", 0, 0.5, false},
        {__LINE__, Literal::Double(0.5, Literal::Scientific), 3, u"", 0, 0.5, false},
        {__LINE__, Literal::Bool(true), 4, u"", 0, 0, true},
        {__LINE__, Literal::Null(), 5, u"", 0, 0, false},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        for (std::shared_ptr<TLog::Value> const& value : {c.value, c.value->Clone()}) {
            Literal const& literal = AsLiteral(value);
            EXPECT_EQ(literal.GetType(), c.type);
            EXPECT_EQ(literal.GetString(), TString(c.text));
            EXPECT_EQ(literal.GetInt(), c.integer);
            EXPECT_EQ(literal.GetDouble(), c.floating);
            EXPECT_EQ(literal.GetBool(), c.truth);
        }
    }
}

TEST(ValueTest, ACloneSharesNothing)
{
    auto const inner = Array::Make({Literal::Int(1), nullptr});
    auto const outer = Object::Make({{u"list", inner}, {u"none", nullptr}});
    auto const clone = std::dynamic_pointer_cast<Object>(outer->Clone());
    inner->GetValues().clear();
    outer->GetValues().clear();

    ASSERT_EQ(clone->GetValues().size(), 2u);
    EXPECT_EQ(clone->GetValues().at(u"none"), nullptr);
    auto const& list = dynamic_cast<Array&>(*clone->GetValues().at(u"list")).GetValues();
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(AsLiteral(list[0]).GetInt(), 1);
    EXPECT_EQ(list[1], nullptr);
}

TEST(ValueTest, AppendedPairsDoNotReplace)
{
    auto const object = Object::Make(std::unordered_map<TString, TString>{{u"a", u"old"}});
    object->AppendValues({{u"a", Literal::String(u"new")}, {u"b", Literal::String(u"new")}});
    EXPECT_EQ(AsLiteral(object->GetValues().at(u"a")).GetString(), u"old");
    EXPECT_EQ(AsLiteral(object->GetValues().at(u"b")).GetString(), u"new");
}

} // namespace
