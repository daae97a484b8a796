#include "korcoreplatform/main/core/runtime/OptUnixDomainSocketDir.h"

namespace {

TString& Dir()
{
    static TString s_dir;
    return s_dir;
}

// Made when the library is loaded, so that it outlives what the host makes later.
[[maybe_unused]] TString const& s_madeAtLoad = Dir();

} // namespace

TString const& OptUnixDomainSocketDir::GetUnixDomainSocketDir()
{
    return Dir();
}

void OptUnixDomainSocketDir::SetUnixDomainSocketDir(TString const& dir)
{
    Dir() = dir;
}
