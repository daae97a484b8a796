/// One factory for every error of the product.

#pragma once

#include "korsys/main/KorSysExport.h"
#include "korsys/main/error/KorvelError.h"

/// Makes the identity of an error. Each function is named after the end of its id string:
/// `AutoGen_0x24F8A094()`, `LogicAssert_0x858A74C8()`. They are declared from the list in
/// KorErrorIds.h, where each stands with its message. A factory belongs to one place in the
/// source: two places never share one.
///
/// Throws: `std::bad_alloc`.
/// Thread safety: every function may be called from any thread.
class KORSYS_EXPORT KorErrorsError
{
public:
    KorErrorsError() = delete;

#define KOR_ERROR_ID(category, kind, number, message) static KorvelError kind##_##number();
#include "korsys/main/error/KorErrorIds.h"
};
