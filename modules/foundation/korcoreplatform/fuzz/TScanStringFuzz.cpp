// A scanner driven by random operations: the cursor only moves forward and never out of the text,
// what is read stands before the new rest, and skipping moves as far as reading. The first byte
// says how many bytes of operations follow; the rest is the text.

#include "korcoreplatform/main/string/TScanString.h"

#include "korcoreplatform/fuzz/support/FuzzInput.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <vector>

namespace {

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

/// One way of reading beside skipping, which must move as far; a read text is what was passed over.
struct Operation
{
    std::function<void(TScanString&, TString&, int)> read; ///< With an argument from 0 to 23.
    std::function<void(TScanString&, int)> skip;
    bool givesText;
};

/// Reads a value, which may be too large where its form is right.
template <class Value>
auto Reader(TScanString& (TScanString::*read)(Value&))
{
    return [read](TScanString& scan, TString&, int) {
        Value value = Value();
        Succeeds([&] { (scan.*read)(value); });
    };
}

constexpr char16_t kSet[] = u"ab1. \n";
constexpr int kBases[] = {0, 2, 8, 10, 16, 36, 37, 63, 64, 65};
using Scan = TScanString;

Operation const kOperations[] = {
    {[](Scan& s, TString& v, int) { s.readLine(v); }, [](Scan& s, int) { s.skipLine(); }, true},
    {[](Scan& s, TString& v, int n) { s.readString(v, n - 8); },
     [](Scan& s, int n) { s.skipString(n - 8); }, true},
    {[](Scan& s, TString& v, int) { s.readNonWhitespace(v); },
     [](Scan& s, int) { s.skipNonWhitespace(); }, true},
    {[](Scan& s, TString& v, int) { s.readAnyOf(v, kSet); },
     [](Scan& s, int) { s.skipAnyOf(kSet); }, true},
    {[](Scan& s, TString& v, int) { s.readAnyNotOf(v, kSet); },
     [](Scan& s, int) { s.skipAnyNotOf(kSet); }, true},
    {Reader<bool>(&Scan::readBool), [](Scan& s, int) { s.skipBool(); }, false},
    {Reader<double>(&Scan::readFloat), [](Scan& s, int) { s.skipFloat(); }, false},
    {[](Scan& s, TString&, int n) {
         int value = 0;
         Succeeds([&] { s.readInt(value, kBases[n % 10]); });
     },
     [](Scan& s, int n) { s.skipInt(kBases[n % 10]); }, false},
};

void Run(TScanString& scan, std::uint8_t code)
{
    std::size_t const number = code % (std::size(kOperations) + 2);
    int const argument = code / 11;
    TString const before = RestOf(scan);
    if (number < std::size(kOperations)) {
        Operation const& operation = kOperations[number];
        TScanString skipper = scan;
        TString value;
        operation.read(scan, value, argument);
        bool const skips = Succeeds([&] { operation.skip(skipper, argument); });
        TString const rest = RestOf(scan);
        int const passed = before.length() - rest.length();
        Require(before.startsWith(value) && before.endsWith(rest) && RestOf(skipper) == rest);
        // A line also passes a newline; what cannot be skipped does not move.
        int const more = number == 0 ? 2 : 0;
        Require(operation.givesText ? passed >= value.length() && passed <= value.length() + more
                                    : skips == (passed > 0));
        Require(number != 0 || value.indexOf(u'\n') < 0);
        Require(number != 6 || passed == TString::leftDoubleLength(before, -1));
        Require(number != 7 ||
                passed == TString::leftIntegerLength(before, -1, kBases[argument % 10]));
    } else if (number == std::size(kOperations)) {
        scan.skipWhitespace();
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
