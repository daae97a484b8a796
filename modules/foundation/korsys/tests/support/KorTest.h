/// What the tests of every module share: the check of an error's class and id, readable texts.

#pragma once

#include "korsys/main/error/KorvelException.h"
#include "korsys/main/text/TStringCore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <iterator>
#include <ostream>
#include <string>
#include <typeinfo>

/// Lets GoogleTest show a text as text.
inline void PrintTo(TStringCore const& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace KorTest {

/// The message that the list of errors has beside an id string.
inline std::string ListedMessage(std::string const& id)
{
    struct Row
    {
        char const* id;
        char const* message;
    };
    static constexpr Row kRows[] = {
#define KOR_ERROR_ID(category, kind, number, message) {#category "_" #kind "_" #number, message},
#include "korsys/main/error/KorErrorIds.h"
    };
    for (Row const& row : kRows) {
        if (id == row.id) {
            return row.message;
        }
    }
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
    std::size_t at = isAssert ? message.rfind(": ") + 2 : 0;
    std::size_t begin = 0;
    for (std::size_t marker = 0; marker != std::string::npos; begin = marker + 2) {
        marker = listed.find('%', begin);
        std::string const piece = listed.substr(begin, marker - begin);
        std::size_t const found = message.find(piece, at);
        if (found == std::string::npos || (begin == 0 && found != at)) {
            return false;
        }
        at = found + piece.size();
        if (marker == std::string::npos) {
            return piece.empty() || at == message.size();
        }
    }
    return false;
}

/// Whether one of the messages is the one that the list has for the id.
inline testing::AssertionResult HasListedMessage(KorvelException const& e, std::string const& id)
{
    for (TStringCore const& message : e.GetMessages()) {
        if (FitsList(message.toStdString(), id)) {
            return testing::AssertionSuccess();
        }
    }
    return testing::AssertionFailure() << "threw " << id << " with \"" << e.what()
                                       << "\", listed is \"" << ListedMessage(id) << '"';
}

/// Whether the record blames the source that the place with this id blames, with status UNKNOWN.
inline testing::AssertionResult HasSourceAndStatus(TError::ErrorInfo const& info,
                                                   std::string const& id)
{
    static constexpr char const* kOfTheSystem[] = {"TIOException_TFile_0x47B61D6A",
                                                   "KorvelException_AutoGen_0xB5B83DCB",
                                                   "KorvelException_AutoGen_0x8CA372D6"};
    bool const isOfTheSystem =
        std::find(std::begin(kOfTheSystem), std::end(kOfTheSystem), id) != std::end(kOfTheSystem);
    auto const expected =
        isOfTheSystem ? TError::ErrorSource::System : TError::ErrorSource::Internal;
    if (info.GetErrorSource() == expected && info.GetStatusCode() == grpc::UNKNOWN) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << id << " has source " << static_cast<int>(info.GetErrorSource()) << " and status "
           << static_cast<int>(info.GetStatusCode());
}

/// Whether `run` throws a KorvelException of exactly the class `type` with the id string `id` and
/// the message listed for it, source and status included, and `firstMessage` unless that is empty.
inline testing::AssertionResult ThrowsError(std::function<void()> const& run,
                                            std::type_info const& type, std::string const& id,
                                            TStringCore const& firstMessage = TStringCore())
{
    try {
        run();
    } catch (std::exception const& e) {
        auto const* const error = dynamic_cast<KorvelException const*>(&e);
        std::string const actual =
            error != nullptr ? error->GetErrorInfo().GetError().GetName().toStdString() : "no id";
        if (error != nullptr && typeid(e) == type && actual == id) {
            testing::AssertionResult const blame = HasSourceAndStatus(error->GetErrorInfo(), id);
            if (!blame) {
                return blame;
            }
            if (!firstMessage.isEmpty() && error->GetMessagesFront() != firstMessage) {
                return testing::AssertionFailure() << id << " says " << e.what();
            }
            return HasListedMessage(*error, id);
        }
        return testing::AssertionFailure()
               << "threw " << typeid(e).name() << " with " << actual << " (" << e.what()
               << "), expected " << type.name() << " with " << id;
    }
    return testing::AssertionFailure() << "did not throw, expected " << id;
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
