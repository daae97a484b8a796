#include "korcoreplatform/main/core/runtime/ICrashNow.h"

#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/KorvelException.h"
#include "korsys/main/error/ThrowError.h"

#include <utility>

namespace {

struct InjectedFuncs
{
    std::function<void()> crashNow = &DefaultCrashNow;
};

InjectedFuncs& Funcs()
{
    // The hook goes when the process exits; what crashes after that still finds the default.
    static InjectedFuncs& s_funcs = *new InjectedFuncs;
    struct DefaultFromExitOn
    {
        ~DefaultFromExitOn() { RegisterICrashNowFunc({}); }
    };
    static DefaultFromExitOn const s_atExit;
    return s_funcs;
}

} // namespace

void ICrashNow()
{
    Funcs().crashNow();
}

void RegisterICrashNowFunc(std::function<void()> func)
{
    Funcs().crashNow = func ? std::move(func) : &DefaultCrashNow;
}

void DefaultCrashNow()
{
    ThrowError<KorvelException>(
        TString(u"Internal error in file "
                u"\"modules/foundation/korcoreplatform/main/core/ICrashNow\" at line 12."),
        &KorErrorsError::AutoGen_0xEEAA139E);
}
