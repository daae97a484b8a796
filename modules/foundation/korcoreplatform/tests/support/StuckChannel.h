/// A channel that never comes back.

#pragma once

#include "korcoreplatform/main/core/logging/CallbackChannel.h"
#include "korsys/main/thread/TEvent.h"

/// Once it is given a record it must not be destroyed.
class StuckChannel : public TLog::CallbackChannel
{
public:
    StuckChannel()
        : CallbackChannel([this](auto...) {
              reached.Signal();
              TEvent().Wait(-1);
          })
    {}

    TEvent reached;
};
