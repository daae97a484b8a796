#include "korcoreplatform/main/core/logging/Value.h"

#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/tests/support/KorTest.h"

#include <type_traits>

namespace {

using namespace TLog;

static_assert(!std::is_constructible_v<Literal, char16_t const*>, "would be a truth value");
static_assert(!std::is_constructible_v<Literal, int>, "could be any kind of number");

Literal const& AsLiteral(std::shared_ptr<TLog::Value> const& value)
{
    return dynamic_cast<Literal const&>(*value);
}

TEST(ValueTest, ALiteralHasOneTypeAndItsMemberAlone)
{
    std::tuple<std::shared_ptr<TLog::Value>, int, TString, long long, double, bool> const cases[] =
        {
            {Literal::String(u"one"), 0, u"one", 0, 0, false},
            {Literal::Int(-7), 1, u"", -7, 0, false},
            {Literal::Double(0.5), 2, u"", 0, 0.5, false},
            {Literal::Double(0.5, static_cast<Literal::Notation>(7)), 2, u"", 0, 0.5, false},
            {Literal::Double(0.5, Literal::Scientific), 3, u"", 0, 0.5, false},
            {Literal::Bool(true), 4, u"", 0, 0, true},
            {Literal::Null(), 5, u"", 0, 0, false},
        };
    for (auto const& [made, type, text, integer, floating, truth] : cases) {
        for (std::shared_ptr<TLog::Value> const& value : {made, made->Clone()}) {
            Literal const& literal = AsLiteral(value);
            EXPECT_TRUE(literal.GetType() == type && literal.GetString() == text &&
                        literal.GetInt() == integer && literal.GetDouble() == floating &&
                        literal.GetBool() == truth)
                << type;
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
    EXPECT_EQ(TLog::Formatter()(*clone), uR"({"list":[1,null],"none":null})");
}

TEST(ValueTest, AppendedPairsDoNotReplace)
{
    auto const object = Object::Make(std::unordered_map<TString, TString>{{u"a", u"old"}});
    object->AppendValues({{u"a", Literal::String(u"new")}, {u"b", Literal::String(u"new")}});
    EXPECT_EQ(TLog::Formatter()(*object), uR"({"a":"old","b":"new"})");
}

} // namespace
