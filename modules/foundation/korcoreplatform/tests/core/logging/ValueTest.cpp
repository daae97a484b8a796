#include "korcoreplatform/main/core/logging/Value.h"

#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/tests/support/KorTest.h"

namespace {

using namespace TLog;

static_assert(!std::is_constructible_v<Literal, char16_t const*>, "would be a truth value");
static_assert(!std::is_constructible_v<Literal, int>, "could be any kind of number");

TEST(ValueTest, ALiteralHasOneTypeAndItsMemberAlone)
{
    std::pair<std::shared_ptr<TLog::Value>, char16_t const*> const cases[] = {
        {Literal::String(u"one"), u"0 one 0 0 0"},
        {Literal::Int(-7), u"1  -7 0 0"},
        {Literal::Double(0.5), u"2  0 0.5 0"},
        {Literal::Double(0.5, static_cast<Literal::Notation>(7)), u"2  0 0.5 0"},
        {Literal::Double(0.5, Literal::Scientific), u"3  0 0.5 0"},
        {Literal::Bool(true), u"4  0 0 1"},
        {Literal::Null(), u"5  0 0 0"},
    };
    for (auto const& [made, members] : cases) {
        for (std::shared_ptr<TLog::Value> const& value : {made, made->Clone()}) {
            auto const& literal = dynamic_cast<Literal const&>(*value);
            EXPECT_EQ(TFormat(u"%1 %2 %3 %4 %5", literal.GetType(), literal.GetString(),
                              literal.GetInt(), literal.GetDouble(), literal.GetBool()),
                      members);
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
