#include "korcoreplatform/main/core/system/TEnvironment.h"

#include "korcoreplatform/tests/support/KorTest.h"

namespace {

TEST(TEnvironmentTest, HoldsVariablesAsQtsTypeDoes)
{
    TEnvironment environment;
    EXPECT_TRUE(environment.isEmpty() && environment == QProcessEnvironment());
    environment.insert(u"B", u"1=2");
    environment.insert(u"A", u"");
    EXPECT_TRUE(environment.contains(u"A") && !environment.contains(u"a"));
    EXPECT_EQ(environment.value(u"A", u"x"), TString());
    EXPECT_EQ(environment.value(u"a", u"x"), TString(u"x"));
    QProcessEnvironment other;
    other.insert("B", "3");
    other.insert("C", u8"\u00e9");
    TEnvironment copy = environment;
    copy.insert(other);
    copy.insert(environment);
    copy.remove(u"A");
    EXPECT_EQ(copy.keys(), (std::vector<TString>{u"B", u"C"}));
    EXPECT_EQ(copy.toVector(), (std::vector<TString>{u"B=1=2", u"C=\u00e9"}));
    EXPECT_TRUE(environment != copy && environment != other && other != environment);
    copy = environment;
    copy.insert(u"A", u"x");
    EXPECT_TRUE(copy != environment && !(copy == environment));
    copy = QProcessEnvironment::systemEnvironment();
    TEnvironment const mine = TEnvironment::myEnvironment();
    EXPECT_TRUE(mine == copy && mine == QProcessEnvironment::systemEnvironment() &&
                QProcessEnvironment::systemEnvironment() == mine);
    static_cast<QProcessEnvironment&>(copy).clear();
    EXPECT_TRUE(copy.isEmpty() && !mine.isEmpty());
    copy = mine;
    copy = {};
    EXPECT_TRUE(copy.isEmpty());
}

} // namespace
