// UTF-8 and UTF-16 read from any bytes: every version of the loops must agree with ICU, and
// well-formed text must come back as it was. The bytes are taken as UTF-8, then as UTF-16 units.

#include "korcoreplatform/fuzz/support/FuzzInput.h"
#include "korsys/tests/support/TextConversionChecks.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const bytes(data, data + size);
    std::u16string const units = Units(data, size);
    CheckDecoding(bytes);
    CheckEncoding(IcuDecode(bytes));
    CheckEncoding(units);
    CheckDecoding(IcuEncode(units));
    return 0;
}
