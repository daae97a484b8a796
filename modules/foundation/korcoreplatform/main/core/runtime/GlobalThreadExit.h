/// Functions that a thread runs when it ends.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"

extern "C" {

/// Registers a function for every thread that ends. Nothing is ever taken out again; a function
/// that is registered twice runs twice.
/// Throws: `LogicException` with id LogicAssert_0x9B334DB6 for null; `std::bad_alloc`.
/// Thread safety: may be called from any thread, as may `CallGlobalThreadExitFuncs`.
KORCOREPLATFORM_EXPORT void AddGlobalThreadExitFunc(void (*fnPtr)());

/// Calls the registered functions on the calling thread, in the order of their registration. The
/// host calls it from each of its threads that ends: the library does not. A function that is
/// registered meanwhile may or may not be called.
/// Throws: what a function throws; those behind it are then not called.
KORCOREPLATFORM_EXPORT void CallGlobalThreadExitFuncs();
}
