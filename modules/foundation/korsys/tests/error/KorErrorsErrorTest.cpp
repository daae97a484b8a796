#include "korsys/main/error/KorErrorsError.h"

#include "korsys/tests/support/KorTest.h"

namespace {

TEST(KorErrorsErrorTest, EveryIdStringSpellsItsNumberAndNoneComesTwice)
{
    KorvelError const all[] = {
#define KOR_ERROR_ID(category, kind, number, message) KorErrorsError::kind##_##number(),
#include "korsys/main/error/KorErrorIds.h"
    };
    std::set<unsigned int> numbers;
    for (KorvelError const& error : all) {
        std::string const name = error.GetName().toStdString();
        char digits[16];
        std::snprintf(digits, sizeof(digits), "_0x%08X", error.GetId());
        std::string const category = name.substr(0, name.find('_'));
        std::string const kind = category == "LogicException"  ? "_LogicAssert"
                                 : error.GetId() == 0x47B61D6A ? "_TFile"
                                                               : "_AutoGen";
        EXPECT_EQ(name, category + kind + digits);
        EXPECT_TRUE(numbers.insert(error.GetId()).second) << name;
    }
    EXPECT_EQ(KorErrorsError::AutoGen_0x00985BE7().GetName(), // zeros first, a scan string's
              u"TFormatStringException_AutoGen_0x00985BE7");
}

} // namespace
