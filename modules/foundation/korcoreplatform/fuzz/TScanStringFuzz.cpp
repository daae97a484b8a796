// A scanner driven by random operations: the cursor only moves forward and never out of the text,
// what is read stands before the new rest, and skipping moves as far as reading. The first byte
// says how many bytes of operations follow; the rest is the text.

#include "korcoreplatform/main/string/TScanString.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

void Require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

TString RestOf(TScanString scan)
{
    TString rest;
    scan.readString(rest, -1);
    return rest;
}

/// Runs an operation that may fail.
template <class Operation>
bool Succeeds(Operation const& operation)
{
    try {
        operation();
        return true;
    } catch (TScanString::Exception const&) {
        return false;
    }
}

/// Readers of texts: what they return is what they passed over. A line also passes a newline.
void CheckText(TScanString& scan, int operation, int n)
{
    constexpr char16_t kSet[] = u"ab1. \n";
    TString const before = RestOf(scan);
    TScanString skipper = scan;
    TString value;
    switch (operation) {
    case 0:
        scan.readLine(value);
        skipper.skipLine();
        Require(value.indexOf(u'\n') < 0);
        break;
    case 1:
        scan.readString(value, n - 8);
        skipper.skipString(n - 8);
        break;
    case 2:
        scan.readNonWhitespace(value);
        skipper.skipNonWhitespace();
        break;
    case 3:
        scan.readAnyOf(value, kSet);
        skipper.skipAnyOf(kSet);
        break;
    default:
        scan.readAnyNotOf(value, kSet);
        skipper.skipAnyNotOf(kSet);
        break;
    }
    TString const rest = RestOf(scan);
    int const passed = before.length() - rest.length() - value.length();
    Require(passed >= 0 && passed <= (operation == 0 ? 2 : 0));
    Require(before.startsWith(value) && before.endsWith(rest));
    Require(RestOf(skipper) == rest);
}

/// Readers of values: they fail to measure without moving, and measure as the whole text does.
void CheckValue(TScanString& scan, int operation, int base)
{
    TString const before = RestOf(scan);
    TScanString skipper = scan;
    bool measured = false;
    int expected = -1;
    if (operation == 0) {
        bool value = false;
        measured = Succeeds([&] { skipper.skipBool(); });
        Require(Succeeds([&] { scan.readBool(value); }) == measured);
    } else if (operation == 1) {
        int value = 0;
        expected = TString::leftIntegerLength(before, -1, base);
        measured = Succeeds([&] { skipper.skipInt(base); });
        Require(!Succeeds([&] { scan.readInt(value, base); }) || measured);
    } else {
        double value = 0;
        expected = TString::leftDoubleLength(before, -1);
        measured = Succeeds([&] { skipper.skipFloat(); });
        Require(!Succeeds([&] { scan.readFloat(value); }) || measured);
    }
    TString const rest = RestOf(scan);
    int const length = before.length() - rest.length();
    Require((length > 0) == measured && before.endsWith(rest) && RestOf(skipper) == rest);
    Require(expected < 0 || length == expected);
}

void Run(TScanString& scan, std::uint8_t code)
{
    int const operation = code % 11;
    int const argument = code / 11;
    TString const before = RestOf(scan);
    if (operation < 5) {
        CheckText(scan, operation, argument);
    } else if (operation < 8) {
        constexpr int kBases[] = {0, 2, 8, 10, 16, 36, 37, 63, 64, 65};
        CheckValue(scan, operation - 5, kBases[argument % 10]);
    } else if (operation == 8) {
        scan.skipWhitespace();
    } else if (operation == 9) {
        Succeeds([&] { scan.skipNewline(); });
    } else {
        TString const start = before.left(argument);
        scan.skip(start.constData());
        Require(RestOf(scan) == before.mid(start.length()));
    }
    Require(Succeeds([&] { scan.end(); }) == RestOf(scan).isEmpty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    std::size_t const operations = std::min<std::size_t>(data[0] % 32, size - 1);
    // A block of exactly the text's size, so that the address sanitizer sees a read outside.
    std::vector<char16_t> text(data + 1 + operations, data + size);
    text.push_back(0);
    TScanString scan(text.data());
    for (std::size_t i = 0; i < operations; ++i) {
        Run(scan, data[1 + i]);
    }
    scan.reset();
    Require(RestOf(scan) == TString(text.data()));
    return 0;
}
