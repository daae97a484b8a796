/// What the tests of every module share: the check of an error's class and id, readable texts.

#pragma once

#include "korsys/main/error/KorvelException.h"
#include "korsys/main/text/TStringCore.h"

#include <gtest/gtest.h>

#include <exception>
#include <functional>
#include <ostream>
#include <string>
#include <typeinfo>

/// Lets GoogleTest show a text as text.
inline void PrintTo(TStringCore const& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace KorTest {

/// Whether `run` throws a KorvelException of exactly the class `type` with the id string `id`.
inline testing::AssertionResult ThrowsError(std::function<void()> const& run,
                                            std::type_info const& type, std::string const& id)
{
    try {
        run();
    } catch (std::exception const& e) {
        auto const* const error = dynamic_cast<KorvelException const*>(&e);
        std::string const actual =
            error != nullptr ? error->GetErrorInfo().GetError().GetName().toStdString() : "no id";
        if (typeid(e) == type && actual == id) {
            return testing::AssertionSuccess();
        }
        return testing::AssertionFailure()
               << "threw " << typeid(e).name() << " with " << actual << " (" << e.what()
               << "), expected " << type.name() << " with " << id;
    }
    return testing::AssertionFailure() << "did not throw, expected " << id;
}

} // namespace KorTest

/// Expects `statement` to throw an exception of exactly `Class` with the error `id`
/// ("TIOException_AutoGen_0x3DE8E9E4"). A statement with commas goes in parentheses.
#define EXPECT_KOR_ERROR(statement, Class, id)                                                     \
    EXPECT_TRUE(KorTest::ThrowsError([&] { statement; }, typeid(Class), id))
