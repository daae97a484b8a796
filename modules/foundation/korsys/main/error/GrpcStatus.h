/// The canonical gRPC status codes, without gRPC.

#pragma once

// A host that uses gRPC itself defines KORSYS_USE_GRPC_HEADERS, and both see gRPC's own type. The
// codes and the type's name are the same, so it may link a library built without the macro.
#ifdef KORSYS_USE_GRPC_HEADERS

#include <grpcpp/support/status_code_enum.h>

#else

namespace grpc {

enum StatusCode
{
    OK = 0,
    CANCELLED = 1,
    UNKNOWN = 2,
    INVALID_ARGUMENT = 3,
    DEADLINE_EXCEEDED = 4,
    NOT_FOUND = 5,
    ALREADY_EXISTS = 6,
    PERMISSION_DENIED = 7,
    RESOURCE_EXHAUSTED = 8,
    FAILED_PRECONDITION = 9,
    ABORTED = 10,
    OUT_OF_RANGE = 11,
    UNIMPLEMENTED = 12,
    INTERNAL = 13,
    UNAVAILABLE = 14,
    DATA_LOSS = 15,
    UNAUTHENTICATED = 16,
    DO_NOT_USE = -1 ///< Makes the type signed and makes switches handle other values.
};

} // namespace grpc

#endif
