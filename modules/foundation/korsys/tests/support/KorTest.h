/// What the tests of every module share: the check of an error's class and id, readable texts, and
/// the headers that most of them need.

#pragma once

#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/KorvelException.h"
#include "korsys/main/error/LogicException.h"
#include "korsys/main/error/StringException.h"
#include "korsys/main/text/TStringCore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include <fnmatch.h>

/// Lets GoogleTest show a text as text.
inline void PrintTo(TStringCore const& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace KorTest {

/// The message that the list of errors has beside an id string.
inline std::string ListedMessage(std::string const& id)
{
#define KOR_ERROR_ID(category, kind, number, message)                                              \
    if (id == #category "_" #kind "_" #number) {                                                   \
        return message;                                                                            \
    }
#include "korsys/main/error/KorErrorIds.h"
    return "no such id";
}

/// Whether `message` is the listed text with something in the places of its markers. A text in
/// parentheses only describes; a logic assert's text ends the message.
inline bool FitsList(std::string const& message, std::string const& id)
{
    std::string const listed = ListedMessage(id);
    if (listed.front() == '(') {
        return true;
    }
    bool const isAssert = id.find("_LogicAssert_") != std::string::npos;
    std::string pattern = isAssert ? "*: " : "";
    for (std::size_t i = 0; i < listed.size(); ++i) {
        bool const isMarker = listed[i] == '%';
        pattern += isMarker ? '*' : listed[i];
        i += isMarker; // its digit
    }
    return ::fnmatch(pattern.c_str(), message.c_str(), FNM_NOESCAPE) == 0;
}

/// What is wrong with the error that `run` throws, nothing if it is of exactly the class `type`,
/// has the id string `id`, the message listed for it, the source that its place blames, status
/// UNKNOWN, `firstMessage` unless that is empty, and a clone that throws the same.
inline testing::AssertionResult ThrowsError(std::function<void()> const& run,
                                            std::type_info const& type, std::string const& id,
                                            TStringCore const& firstMessage = TStringCore())
{
    auto const failure = [&] { return testing::AssertionFailure() << "expected " << id << ": "; };
    try {
        run();
    } catch (KorvelException const& e) {
        TError::ErrorInfo const& info = e.GetErrorInfo();
        if (typeid(e) != type || id != info.GetError().GetName().toStdString()) {
            return failure() << typeid(e).name() << ' ' << info.GetError().GetName() << ' '
                             << e.what();
        }
        bool const isOfTheSystem = id == "TIOException_TFile_0x47B61D6A" ||
                                   id == "KorvelException_AutoGen_0xB5B83DCB" ||
                                   id == "KorvelException_AutoGen_0x8CA372D6";
        if (info.GetErrorSource() !=
                (isOfTheSystem ? TError::ErrorSource::System : TError::ErrorSource::Internal) ||
            info.GetStatusCode() != grpc::UNKNOWN) {
            return failure() << "source " << static_cast<int>(info.GetErrorSource()) << ", status "
                             << static_cast<int>(info.GetStatusCode());
        }
        bool isListed = false;
        for (TStringCore const& message : e.GetMessages()) {
            isListed = isListed || FitsList(message.toStdString(), id);
        }
        if (!isListed || (!firstMessage.isEmpty() && e.GetMessagesFront() != firstMessage)) {
            return failure() << "says " << e.what() << ", listed " << ListedMessage(id);
        }
        std::unique_ptr<KorvelException const> const clone(e.Clone());
        try {
            clone->Throw();
        } catch (KorvelException const& thrown) {
            if (typeid(thrown) != type || thrown.GetMessages() != e.GetMessages()) {
                return failure() << "its clone throws " << typeid(thrown).name();
            }
        }
        return testing::AssertionSuccess();
    } catch (std::exception const& e) {
        return failure() << typeid(e).name() << ' ' << e.what();
    }
    return failure() << "did not throw";
}

/// The message of a failed assertion at a place below the module's main folder.
inline TStringCore AssertText(std::string const& place, int line, std::string const& text)
{
    return TStringCore::fromStdString(
        "Internal error in file \"modules/foundation/korcoreplatform/main/" + place +
        "\" at line " + std::to_string(line) + ": " + text);
}

/// What an error is about does not matter.
inline TError::ErrorInfo SomeError()
{
    return {KorErrorsError::AutoGen_0x1A36D05F(), TError::ErrorSource::Internal, grpc::UNKNOWN};
}

} // namespace KorTest

/// Expects `statement` to throw an exception of exactly `Class` with the error `id`
/// ("TIOException_AutoGen_0x3DE8E9E4") and its listed message. A statement with commas goes in
/// parentheses.
#define EXPECT_KOR_ERROR(statement, Class, id)                                                     \
    EXPECT_TRUE(KorTest::ThrowsError([&] { statement; }, typeid(Class), id))

/// The same with the exact first message, a `TStringCore`.
#define EXPECT_KOR_ERROR_TEXT(statement, Class, id, message)                                       \
    EXPECT_TRUE(KorTest::ThrowsError([&] { statement; }, typeid(Class), id, message))

/// Expects `statement` to fail the assertion `number` ("0xA1EE3CF3") with the line and text given.
#define EXPECT_KOR_ASSERT(statement, number, place, line, text)                                    \
    EXPECT_KOR_ERROR_TEXT(statement, LogicException, "LogicException_LogicAssert_" number,         \
                          KorTest::AssertText(place, line, text))
