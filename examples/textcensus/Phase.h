/// The phases of a census in its log.

#pragma once

#include "korcoreplatform/main/core/logging/LogScopes.h"
#include "korcoreplatform/main/core/logging/Logger.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/string/TString.h"

#include <cstdint>
#include <memory>

namespace TextCensus {

/// Logs a record at its end: what was noted, and how long it took.
class Phase
{
public:
    explicit Phase(TString const& name)
        : m_scope(**TLog::Logger::Get(), name, m_values, TLog::ElapsedTimeEventScope::EndOnly)
    {}

    void Note(TString const& name, std::uint64_t number)
    {
        m_values->GetValues()[name] = TLog::Literal::Int(static_cast<long long>(number));
    }

private:
    std::shared_ptr<TLog::Object> m_values = std::make_shared<TLog::Object>();
    TLog::ElapsedTimeEventScope m_scope;
};

} // namespace TextCensus
