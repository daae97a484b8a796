#include "korcoreplatform/main/core/logging/CallbackChannel.h"

#include <utility>

namespace TLog {

CallbackChannel::CallbackChannel(Callback callback) : m_callback(std::move(callback))
{
    if (!m_callback) {
        throw std::bad_function_call();
    }
}

CallbackChannel::~CallbackChannel() = default;

void CallbackChannel::Append(Severity severity, Event const& event)
{
    Append(AccessLevel::Standard, severity, event);
}

void CallbackChannel::Append(AccessLevel accessLevel, Severity severity, Event const& event)
{
    m_callback(accessLevel, severity, event);
}

} // namespace TLog
