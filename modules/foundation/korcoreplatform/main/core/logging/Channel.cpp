#include "korcoreplatform/main/core/logging/Channel.h"

namespace TLog {

Channel::~Channel() = default;

ChannelCounters Channel::GetCounters() const
{
    return {};
}

} // namespace TLog
