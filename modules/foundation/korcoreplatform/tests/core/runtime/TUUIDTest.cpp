#include "korcoreplatform/main/core/runtime/TUUID.h"

#include "korcoreplatform/main/string/TString.h"
#include "korcoreplatform/tests/support/KorTest.h"

#include <QByteArray>
#include <QString>

namespace {

constexpr char kTooShort[] = "KorvelException_AutoGen_0x318CE3BA";
constexpr char kNotANumber[] = "KorvelException_AutoGen_0x9B4122E9";

std::vector<unsigned char> RandomBytes(std::mt19937& random)
{
    std::vector<unsigned char> bytes(16);
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(random());
    }
    return bytes;
}

TEST(TUUIDTest, EveryTextFormWritesTheFieldsInOrder)
{
    // Braced, base 36, base 64.
    char16_t const* const cases[][3] = {
        {u"{00000000-0000-0000-0000-000000000000}", u"0000000000000000000000000000",
         u"0000000000000000000000"},
        // Each field holds another value: swapped groups or bytes show up.
        {u"{00000001-0002-0003-0004-000500000006}", u"00000010002t4z0005m9x0000006",
         u"00000400w0300400k00006"},
        // Every group at its widest.
        {u"{FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF}", u"1z141z31z141z31z141z31z141z3",
         u"f__________f__________"},
    };
    for (auto const& [braced, base36, base64] : cases) {
        SCOPED_TRACE(TString(braced));
        TUUID const id(braced);
        EXPECT_EQ(id.ToString(TUUIDFormatOption::Braced), TString(braced));
        EXPECT_EQ(id.ToString(static_cast<TUUIDFormatOption>(9)), TString(braced));
        EXPECT_EQ(id.ToString(TUUIDFormatOption::Compact), TString(braced).removeAnyOf(u"{}-"));
        EXPECT_EQ(id.ToString(TUUIDFormatOption::Base36), TString(base36));
        EXPECT_EQ(id.ToString(TUUIDFormatOption::Base64), TString(base64));
    }
}

template <class Id>
std::vector<bool> Relations(Id const& a, Id const& b)
{
    return {a == b, a != b, a > b, a >= b, a < b, a <= b};
}

TEST(TUUIDTest, FormsAgreeWithQtAndReadBackWhatTheyWrote)
{
    std::mt19937 random(301); // fixed seed: a failure can be run again
    for (int i = 0; i < 1000; ++i) {
        std::vector<unsigned char> const bytes = RandomBytes(random);
        TUUID const id = TUUID::FromRFC4122(bytes);
        QUuid const& qUuid = id;
        QByteArray const qBytes(reinterpret_cast<char const*>(bytes.data()), 16);
        ASSERT_EQ(qUuid, QUuid::fromRfc4122(qBytes)) << id;
        ASSERT_EQ(id.ToRFC4122(), bytes) << id;
        ASSERT_EQ(TString(id), TString(qUuid.toString().toUpper())) << id;
        ASSERT_EQ(std::hash<TUUID>()(id), qHash(qUuid, 0)) << id;
        TUUID const other = i % 2 == 0 ? TUUID::FromRFC4122(RandomBytes(random)) : id;
        ASSERT_EQ(Relations<TUUID>(id, other), Relations<QUuid>(id, other)) << id << other;
        TString const text = id.ToString(TUUIDFormatOption::Base36);
        ASSERT_EQ(TUUID::FromBase36(text), id) << text;
        ASSERT_EQ(TUUID::FromBase36(text.toUpper() + u"?"), id) << text;
    }
}

TEST(TUUIDTest, TextsAreReadAsQtReadsThem)
{
    constexpr char16_t kUnits[] = u"0fFgG{}- @`/:\0\u00E6\u0130\u0661\u0131\uFF10";
    std::mt19937 random(302);
    int accepted = 0;
    for (int i = 0; i < 20000; ++i) {
        TString text = TUUID::FromRFC4122(RandomBytes(random));
        if (random() % 2 == 0) {
            text = text.toLower().mid(1); // no opening brace
        }
        text.truncate(text.length() - static_cast<int>(random() % 4));
        for (unsigned changes = random() % 3; changes > 0; --changes) {
            int const at = static_cast<int>(random() % static_cast<unsigned>(text.length()));
            text.replace(at, static_cast<int>(random() % 2), kUnits[random() % 19]);
        }
        QUuid const expected(text.toQString());
        ASSERT_EQ(TUUID(text), TUUID(expected)) << text;
        std::string const latin1 = text.toLatin1();
        ASSERT_EQ(TUUID(latin1.c_str()), TUUID(QUuid(QByteArray(latin1.c_str())))) << text;
        ASSERT_EQ(TUUID(text.toQString()), TUUID(text)) << text;
        accepted += expected.isNull() ? 0 : 1;
    }
    EXPECT_GT(accepted, 2000); // both answers were compared
    EXPECT_LT(accepted, 18000);
}

TEST(TUUIDTest, ArgumentsThatAreNoIdGiveTheNullId)
{
    EXPECT_TRUE(TUUID(static_cast<char const*>(nullptr)).IsNull());
    EXPECT_TRUE(TUUID(static_cast<char16_t const*>(nullptr)).IsNull());
    EXPECT_TRUE(TUUID(u"00000001000200030004000500000006").IsNull());
    std::vector<unsigned char> const bytes(17, 1);
    EXPECT_TRUE(TUUID::FromRFC4122(bytes).IsNull());
    EXPECT_TRUE(TUUID::FromRFC4122(bytes.data(), 15).IsNull());
    EXPECT_TRUE(TUUID::FromRFC4122(nullptr, 16).IsNull());
    EXPECT_FALSE(TUUID::FromRFC4122(bytes.data(), 16).IsNull());
    TUUID const created = TUUID::CreateUUID();
    EXPECT_EQ(static_cast<QUuid const&>(created).version(), QUuid::Random);
    EXPECT_NE(created, TUUID::CreateUUID());
}

TEST(TUUIDTest, FromBase36RejectsBadTextWithItsOwnError)
{
    for (char16_t const* text :
         {u"", u"000000000000000000000000000", u"!!!!!!!!!!!!!!!!!!!!!!!!!!!"}) {
        EXPECT_KOR_ERROR(TUUID::FromBase36(text), KorvelException, kTooShort) << TString(text);
    }
    // Later groups do not make up for a bad one; the last is one more than 32 bits hold.
    for (char16_t const* text :
         {u"000000000000000000000000000!", u"!000000000000000000000000000",
          u"0000000       00000000000000", u"0000000000000000000001z141z4"}) {
        EXPECT_KOR_ERROR(TUUID::FromBase36(text), KorvelException, kNotANumber) << TString(text);
    }
}

} // namespace
