#include "korcoreplatform/main/core/runtime/TUUID.h"

#include "korcoreplatform/tests/support/KorTest.h"

namespace {

constexpr char kTooShort[] = "KorvelException_AutoGen_0x318CE3BA";
constexpr char kNotANumber[] = "KorvelException_AutoGen_0x9B4122E9";

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
        TString const small = TString(braced).toLower(); // compared as ids, not as texts
        std::string const narrow = small.toStdString();
        EXPECT_TRUE(id == small && id == small.constData() && id == narrow.c_str());
        EXPECT_TRUE(small == id && small.constData() == id && narrow.c_str() == id);
        EXPECT_FALSE(id != small || small != id || braced != id);
        EXPECT_EQ(id.ToString(static_cast<TUUIDFormatOption>(9)), TString(braced));
        EXPECT_EQ(id.ToString(TUUIDFormatOption::Base36), TString(base36));
        EXPECT_EQ(id.ToString(TUUIDFormatOption::Base64), TString(base64));
    }
}

TEST(TUUIDTest, EveryByteTellsIdsApart)
{
    TUUID const id(u"{00112233-4455-6677-8899-aabbccddeeff}");
    std::vector<unsigned char> const bytes = id.ToRFC4122();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::vector<unsigned char> other = bytes;
        other[i] ^= 1;
        EXPECT_FALSE(TUUID::FromRFC4122(other) == id);
        EXPECT_TRUE(TUUID::FromRFC4122(other) != id);
    }
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
