#include "korcoreplatform/main/core/logging/TLogException.h"

#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Logger.h"
#include "korcoreplatform/main/core/logging/LoggerUse_p.h"
#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/KorvelException.h"
#include "korsys/main/error/LogicException.h"
#include "korsys/main/error/TError.h"

#include <boost/type_index.hpp>

#include <memory>
#include <string>
#include <utility>

namespace {

using TLog::Object;
using TLog::Severity;

struct Description
{
    TString type;
    TString message;
};

/// The class of the object, without the keyword that some compilers put in front.
TString TypeNameOf(std::exception const& e)
{
    std::string name = boost::typeindex::type_id_runtime(e).pretty_name();
    for (char const* keyword : {"struct ", "class "}) {
        std::string const prefix = keyword;
        if (name.compare(0, prefix.size(), prefix) == 0) {
            name.erase(0, prefix.size());
            break;
        }
    }
    return TString::fromStdString(name);
}

Description Describe(KorvelException const& e)
{
    return {TypeNameOf(e), TString(e.CollateMessagesForLog())};
}

Description Describe(std::exception const& e)
{
    return {TypeNameOf(e), TString::fromUtf8(e.what())};
}

Description Describe(std::exception_ptr const& exception)
{
    try {
        std::rethrow_exception(exception);
    } catch (KorvelException const& e) {
        return Describe(e);
    } catch (std::exception const& e) {
        return Describe(e);
    } catch (...) {
        return {u"Unknown-exception-type", u"Unknown exception caught by catch(...)"};
    }
}

std::exception_ptr CurrentException()
{
    std::exception_ptr eptr = std::current_exception();
    if (eptr == nullptr) {
        ThrowLogicException("modules/foundation/korcoreplatform/main/core/TLogException", 61,
                            "eptr", KorErrorsError::LogicAssert_0x8C06D7DE());
    }
    return eptr;
}

TLog::Event MakeEvent(Object::Map&& values, TError::ErrorInfo* error)
{
    std::shared_ptr<Object> value = Object::Make(std::move(values));
    return error == nullptr ? TLog::Event(u"excp", std::move(value))
                            : TLog::Event(u"excp", std::move(value), std::move(*error));
}

/// `values` are copied or moved, whichever they are given for, once the record is wanted. `error`
/// may be null.
template <class Exception, class Values>
void Log(Severity severity, char16_t const* msg, Exception const& exception,
         TError::ErrorInfo* error, Values&& values)
{
    TLog::LoggerUse const logger;
    if (!logger->AcceptsSeverity(severity)) {
        return;
    }
    Description description = Describe(exception);
    Object::Map described(std::forward<Values>(values));
    described[u"excp-type"] = TLog::Literal::String(std::move(description.type));
    described[u"excp-msg"] = TLog::Literal::String(std::move(description.message));
    described[u"msg"] = TLog::Literal::String(TString(msg));
    logger->Log(severity, MakeEvent(std::move(described), error));
}

} // namespace

// Severities are passed by value, as to `LogMessage`.
// NOLINTBEGIN(performance-unnecessary-value-param)

void TLog::LogException(NonErrorSeverity severity, char16_t const* msg, KorvelException const& e,
                        Object::Map const& values)
{
    Log(severity.Get(), msg, e, nullptr, values);
}

void TLog::LogException(NonErrorSeverity severity, char16_t const* msg, KorvelException const& e,
                        Object::Map&& values)
{
    Log(severity.Get(), msg, e, nullptr, std::move(values));
}

void TLog::LogException(NonErrorSeverity severity, char16_t const* msg, std::exception const& e,
                        Object::Map const& values)
{
    Log(severity.Get(), msg, e, nullptr, values);
}

void TLog::LogException(NonErrorSeverity severity, char16_t const* msg, std::exception const& e,
                        Object::Map&& values)
{
    Log(severity.Get(), msg, e, nullptr, std::move(values));
}

void TLog::LogException(AnySeverity severity, char16_t const* msg, KorvelException const& e,
                        TError::ErrorInfo&& error, Object::Map const& values)
{
    Log(severity.Get(), msg, e, &error, values);
}

void TLog::LogException(AnySeverity severity, char16_t const* msg, KorvelException const& e,
                        TError::ErrorInfo&& error, Object::Map&& values)
{
    Log(severity.Get(), msg, e, &error, std::move(values));
}

void TLog::LogException(AnySeverity severity, char16_t const* msg, std::exception const& e,
                        TError::ErrorInfo&& error, Object::Map const& values)
{
    Log(severity.Get(), msg, e, &error, values);
}

void TLog::LogException(AnySeverity severity, char16_t const* msg, std::exception const& e,
                        TError::ErrorInfo&& error, Object::Map&& values)
{
    Log(severity.Get(), msg, e, &error, std::move(values));
}

void TLog::LogCurrentException(NonErrorSeverity severity, char16_t const* msg,
                               Object::Map const& values)
{
    Log(severity.Get(), msg, CurrentException(), nullptr, values);
}

void TLog::LogCurrentException(AnySeverity severity, char16_t const* msg, TError::ErrorInfo&& error,
                               Object::Map const& values)
{
    Log(severity.Get(), msg, CurrentException(), &error, values);
}

// NOLINTEND(performance-unnecessary-value-param)
