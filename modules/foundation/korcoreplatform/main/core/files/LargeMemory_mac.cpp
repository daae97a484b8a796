#include "korcoreplatform/main/core/files/LargeMemory_p.h"

void LargeMemory::WillFill(void* /*block*/, std::size_t /*bytes*/) noexcept
{
    // This system chooses the size of its pages alone.
}
