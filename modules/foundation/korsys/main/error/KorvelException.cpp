#include "korsys/main/error/KorvelException.h"

#include <string>
#include <utility>

struct KorvelException::State
{
    std::vector<TStringCore> messages;
    std::shared_ptr<TError::ErrorInfo const> errorInfo; ///< Outlives changes of the messages.
    std::string what;                                   ///< The joined messages in UTF-8.
};

KorvelException::KorvelException(TStringCore const& message, TError::ErrorInfo const& errorInfo)
    : KorvelException(std::vector<TStringCore>(1, message), errorInfo)
{}

KorvelException::KorvelException(TFormatStringCore const& format,
                                 TError::ErrorInfo const& errorInfo)
    : KorvelException(format.result(), errorInfo)
{}

KorvelException::KorvelException(std::vector<TStringCore> const& messages,
                                 TError::ErrorInfo const& errorInfo)
{
    SetState(std::vector<TStringCore>(messages),
             std::make_shared<TError::ErrorInfo const>(errorInfo));
}

KorvelException::KorvelException(KorvelException const& other) noexcept = default;
KorvelException& KorvelException::operator=(KorvelException const& other) noexcept = default;
KorvelException::~KorvelException() = default;

KorvelException* KorvelException::Clone() const
{
    return new KorvelException(*this);
}

void KorvelException::Throw() const
{
    throw KorvelException(*this);
}

void KorvelException::StackMessage(TStringCore const& message)
{
    std::vector<TStringCore> messages(GetMessages());
    messages.push_back(message);
    SetState(std::move(messages), m_state->errorInfo);
}

void KorvelException::StackMessageFront(TStringCore const& message)
{
    std::vector<TStringCore> messages(GetMessages());
    messages.insert(messages.begin(), message);
    SetState(std::move(messages), m_state->errorInfo);
}

std::vector<TStringCore> const& KorvelException::GetMessages() const noexcept
{
    return m_state->messages;
}

TStringCore KorvelException::GetMessagesFront() const
{
    return GetMessages().empty() ? TStringCore() : GetMessages().front();
}

TStringCore KorvelException::GetConcatenatedMessages() const
{
    return TStringCore::join(GetMessages(), u'\n');
}

TStringCore KorvelException::CollateMessagesForLog() const
{
    return TStringCore::join(GetMessages(), u" | ");
}

TError::ErrorInfo const& KorvelException::GetErrorInfo() const noexcept
{
    return *m_state->errorInfo;
}

char const* KorvelException::what() const noexcept
{
    return m_state->what.c_str();
}

void KorvelException::SetState(std::vector<TStringCore>&& messages,
                               std::shared_ptr<TError::ErrorInfo const> const& errorInfo)
{
    std::string what = TStringCore::join(messages, u'\n').toStdString();
    m_state = std::make_shared<State const>(State{std::move(messages), errorInfo, std::move(what)});
}
