/// A channel that never comes back.

#pragma once

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/Channel.h"
#include "korsys/main/thread/TEvent.h"

/// Once it is given a record it must not be destroyed.
class StuckChannel : public TLog::Channel
{
public:
    void Append(TLog::Severity, TLog::Event const&) override
    {
        reached.Signal();
        TEvent().Wait(-1);
    }
    void Append(TLog::AccessLevel, TLog::Severity severity, TLog::Event const& event) override
    {
        Append(severity, event);
    }
    void Flush() override {}
    TPath GetPath() const override { return {}; }
    unsigned long GetFileSizeMB() const override { return 0; }

    TEvent reached;
};
