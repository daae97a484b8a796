/// The one way in which a failure is raised.

#pragma once

#include "korsys/main/error/KorvelError.h"
#include "korsys/main/error/TError.h"

/// Throws an `Exception` that carries `message` and the error of the throwing place, with status
/// code UNKNOWN. The factory is the place's own, a function of `KorErrorsError`:
///
///     ThrowError<StringException>(TStringCore(u"..."), &KorErrorsError::AutoGen_0xDBED6C12);
///
/// `message` is anything that the class takes as its message. Arguments behind the source go to
/// the class's constructor, behind the record.
/// Throws: `Exception`; what goes wrong while it is made, otherwise.
template <class Exception, class Message, class... MoreArguments>
[[noreturn, gnu::cold, gnu::noinline]] void
ThrowError(Message message, KorvelError (*makeError)(),
           TError::ErrorSource source = TError::ErrorSource::Internal,
           MoreArguments... moreArguments)
{
    throw Exception(message, TError::ErrorInfo(makeError(), source, grpc::UNKNOWN),
                    moreArguments...);
}
