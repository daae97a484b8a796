#include "korcoreplatform/main/string/TScanString.h"

#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/main/error/LogicException.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <type_traits>

namespace {

using Scan = TScanString;

/// One kind of value: how it is read, with the value as a text, and how it is skipped.
struct Kind
{
    TString (*read)(Scan&);
    void (*skip)(Scan&);
};

template <class Value, class... Arguments>
TString Read(Scan& scan, Scan& (Scan::*read)(Value&, Arguments...), Arguments... arguments)
{
    Value value = Value();
    (scan.*read)(value, arguments...);
    if constexpr (std::is_arithmetic_v<Value>) {
        return TString::number(+value);
    } else {
        return value;
    }
}

Kind const kBool = {[](Scan& s) { return Read<bool>(s, &Scan::readBool); }, [](Scan& s) { s.skipBool(); }};
Kind const kDouble = {[](Scan& s) { return Read<double>(s, &Scan::readFloat); }, [](Scan& s) { s.skipFloat(); }};
Kind const kFloat = {[](Scan& s) { return Read<float>(s, &Scan::readFloat); }, [](Scan& s) { s.skipFloat(); }};
Kind const kLine = {[](Scan& s) { return Read(s, &Scan::readLine); }, [](Scan& s) { s.skipLine(); }};
Kind const kWord = {[](Scan& s) { return Read(s, &Scan::readNonWhitespace); }, [](Scan& s) { s.skipNonWhitespace(); }};
Kind const kAbc = {[](Scan& s) { return Read(s, &Scan::readAnyOf, u"abc"); }, [](Scan& s) { s.skipAnyOf(u"abc"); }};
Kind const kKey = {[](Scan& s) { return Read(s, &Scan::readAnyNotOf, u":="); }, [](Scan& s) { s.skipAnyNotOf(u":="); }};
Kind const kNoneOfNone = {[](Scan& s) { return Read<TString, char16_t const*>(s, &Scan::readAnyOf, nullptr); }, [](Scan& s) { s.skipAnyOf(nullptr); }};
template <int base>
Kind const kInt = {[](Scan& s) { return Read(s, &Scan::readInt, base); }, [](Scan& s) { s.skipInt(base); }};
template <int n>
Kind const kString = {[](Scan& s) { return Read(s, &Scan::readString, n); }, [](Scan& s) { s.skipString(n); }};
/// What gives no value.
template <void (*scan)(Scan&)>
Kind const kNoValue = {[](Scan& s) { scan(s); return TString(); }, scan};
void Newline(Scan& s) { s.skipNewline(); }
void Space(Scan& s) { s.skipWhitespace(); }
void Abc(Scan& s) { s.skip(u"abc"); }
void End(Scan& s) { s.end(); }
}
