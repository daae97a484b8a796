/// Log records handed to a function.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/Channel.h"

#include <functional>

namespace TLog {

/// Calls a function of the host for every record, on the thread that appends it: with a logger that
/// has a writer thread, on that one. Nothing is kept or buffered, so a slow function holds up the
/// records behind; what it throws leaves `Append`.
///
/// Thread safety: as far as the function's.
class KORCOREPLATFORM_EXPORT CallbackChannel : public Channel
{
public:
    using Callback = std::function<void(AccessLevel, Severity, Event const&)>;

    /// Throws: `std::bad_function_call` for an empty function.
    explicit CallbackChannel(Callback callback);
    ~CallbackChannel() override;

    void Append(Severity severity, Event const& event) override;
    void Append(AccessLevel accessLevel, Severity severity, Event const& event) override;

    void Flush() override {}
    TPath GetPath() const override { return {}; }
    unsigned long GetFileSizeMB() const override { return 0; }

private:
    Callback m_callback; ///< Never empty.
};

} // namespace TLog
