#include "korcoreplatform/main/core/runtime/OptApplicationDir.h"

namespace {

constexpr char16_t kNativeSeparator = u'/';

TString& Dir()
{
    static TString s_dir;
    return s_dir;
}

// Made when the library is loaded, so that it outlives what the host makes later.
[[maybe_unused]] TString const& s_madeAtLoad = Dir();

} // namespace

TString const& OptApplicationDir::GetApplicationDir()
{
    return Dir();
}

void OptApplicationDir::SetApplicationDir(TString const& dir)
{
    TString stored = dir;
    if (!stored.isEmpty() && !stored.endsWith(u'/') && !stored.endsWith(u'\\')) {
        stored += kNativeSeparator;
    }
    Dir().swap(stored);
}
