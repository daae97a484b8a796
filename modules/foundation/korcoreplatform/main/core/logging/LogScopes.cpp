#include "korcoreplatform/main/core/logging/LogScopes.h"

#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Filter.h"
#include "korcoreplatform/main/core/logging/Logger.h"
#include "korcoreplatform/main/core/logging/Severity.h"
#include "korcoreplatform/main/core/runtime/OptMetrics.h"
#include "korcoreplatform/main/core/system/TElapsedTimer.h"

#include <utility>

namespace TLog {

FilterScope::FilterScope(Logger& logger, std::shared_ptr<Filter> filter)
    : m_logger(logger), m_filter(std::move(filter))
{
    m_logger.AddFilter(m_filter);
}

FilterScope::~FilterScope()
{
    try {
        m_logger.RemoveFilter(m_filter);
    } catch (...) { // a scope that ends is no place to fail
    }
}

ElapsedTimeEventScope::ElapsedTimeEventScope(Logger& logger, TString const& name,
                                             std::unordered_map<TString, TString> const& values,
                                             Type type)
    : ElapsedTimeEventScope(logger, name, Object::Make(values), type)
{}

ElapsedTimeEventScope::ElapsedTimeEventScope(Logger& logger, TString const& name,
                                             std::shared_ptr<Object> values, Type type)
    : m_logger(logger), m_name(name),
      m_values(values != nullptr ? std::move(values) : std::make_shared<Object>()),
      m_timer(std::make_unique<TElapsedTimer>(true)), m_type(type)
{
    Begin();
}

ElapsedTimeEventScope::~ElapsedTimeEventScope()
{
    try {
        End();
    } catch (...) { // a scope that ends is no place to fail
    }
}

void ElapsedTimeEventScope::Begin()
{
    if (HasBeginRecord() && IsWanted()) {
        // A copy: the scope's own object still changes.
        m_logger.Log(Severity::Info, Event(u"begin-" + m_name, m_values->Clone()));
    }
}

void ElapsedTimeEventScope::End()
{
    auto elapsed = Literal::Double(m_timer->ElapsedSec());
    if (m_isHandedOver) {
        m_values = std::make_shared<Object>(m_values->GetValues());
    }
    m_values->GetValues().insert_or_assign(u"elapsed", std::move(elapsed));
    if (IsWanted()) {
        m_isHandedOver = true;
        m_logger.Log(Severity::Info, Event(HasBeginRecord() ? u"end-" + m_name : m_name, m_values));
    }
}

bool ElapsedTimeEventScope::HasBeginRecord() const noexcept
{
    return m_type == BeginEnd || m_type == BeginEndWhenTracing;
}

bool ElapsedTimeEventScope::IsWanted() const
{
    return (m_type != BeginEndWhenTracing || OptMetrics::IsActivityAndResourceTracingEnabled()) &&
           m_logger.AcceptsSeverity(Severity::Info);
}

} // namespace TLog
