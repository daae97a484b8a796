/// The root of the product's exceptions.

#pragma once

#include "korsys/main/KorSysExport.h"
#include "korsys/main/error/TError.h"
#include "korsys/main/text/TFormatStringCore.h"
#include "korsys/main/text/TStringCore.h"

#include <exception>
#include <memory>
#include <type_traits>
#include <vector>

/// A failure: a stack of messages and the record of what failed. Subclasses add no state, they let
/// handlers catch by category; each overrides `Clone` and `Throw` with its own type.
///
///     catch (KorvelException& e) {
///         e.StackMessageFront(TStringCore(u"The settings could not be read."));
///         throw;
///     }
///
/// Copies cost no allocation and never throw: they share the state until one of them changes.
/// The messages that an exception hands out are good until they change or it is assigned to, the
/// record until it is assigned to.
///
/// Thread safety: one object may be read from several threads, copies may be used from different
/// threads at once; a write needs its object alone.
class KORSYS_EXPORT KorvelException : public std::exception
{
public:
    KorvelException(TStringCore const& message, TError::ErrorInfo const& errorInfo);

    /// The message is what `format` renders to.
    KorvelException(TFormatStringCore const& format, TError::ErrorInfo const& errorInfo);

    KorvelException(std::vector<TStringCore> const& messages, TError::ErrorInfo const& errorInfo);

    /// Takes a type that converts both to a text and to a format string as a format string.
    template <class Format,
              class = std::enable_if_t<std::is_convertible_v<Format const&, TFormatStringCore>>>
    KorvelException(Format const& format, TError::ErrorInfo const& errorInfo)
        : KorvelException(FormatOf(format), errorInfo)
    {}

    KorvelException(KorvelException const& other) noexcept;
    KorvelException& operator=(KorvelException const& other) noexcept;
    ~KorvelException() override;

    /// A copy with the dynamic type of this object.
    /// Ownership: the caller deletes it.
    virtual KorvelException* Clone() const;

    /// Throws a copy with the dynamic type of this object.
    [[noreturn]] virtual void Throw() const;

    /// Adds context behind the messages or in front of them.
    /// Throws: `std::bad_alloc`; the exception is then unchanged.
    void StackMessage(TStringCore const& message);
    void StackMessageFront(TStringCore const& message);

    std::vector<TStringCore> const& GetMessages() const noexcept;
    TStringCore GetMessagesFront() const;        ///< The first message, empty when there is none.
    TStringCore GetConcatenatedMessages() const; ///< One message a line.
    TStringCore CollateMessagesForLog() const;   ///< All in one line, " | " between two.
    TError::ErrorInfo const& GetErrorInfo() const noexcept;

    /// `GetConcatenatedMessages()` in UTF-8, made when the messages were set.
    char const* what() const noexcept override;

private:
    struct State;

    static TFormatStringCore FormatOf(TFormatStringCore format) { return format; }
    void SetState(std::vector<TStringCore>&& messages,
                  std::shared_ptr<TError::ErrorInfo const> const& errorInfo);

    std::shared_ptr<State const> m_state; ///< Never null, never changed: a change replaces it.
};
