#include "korcoreplatform/main/core/runtime/ICrashNow.h"
#include "korcoreplatform/main/core/runtime/ObjectFactory.h"
#include "korcoreplatform/tests/support/KorTest.h"

#include <cstdlib>

#include <unistd.h>

namespace {

int g_hooksThatLive = 0;

/// What a host installs, and what the library destroys when the process ends.
struct Installed
{
    Installed() { ++g_hooksThatLive; }
    Installed(Installed const&) { ++g_hooksThatLive; }
    ~Installed() { --g_hooksThatLive; }
};

/// Made before anything is installed, so destroyed after it. The exit code tells what it found.
struct Last
{
    ~Last()
    {
        bool isDefault = false;
        try {
            ICrashNow();
        } catch (KorvelException const&) {
            isDefault = true;
        }
        bool const isEmpty = FactoryRegistry::Singleton().GetFactory(u"last") == nullptr;
        ::_exit(isDefault && isEmpty && g_hooksThatLive == 0 ? 7 : 1);
    }
};

TEST(ProcessEndProcessTest, WhatTheHostInstalledIsGoneAndWhatNeedsItIsNot)
{
    auto const end = [] {
        static Last const s_last;
        RegisterICrashNowFunc([installed = Installed()] {});
        static ObjectFactoryBase s_factory(u"last");
        FactoryRegistry::Singleton().Register([installed = Installed()] { return &s_factory; });
        if (g_hooksThatLive == 2) {
            std::exit(0);
        }
        ::_exit(1);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(7), "");
}

} // namespace
