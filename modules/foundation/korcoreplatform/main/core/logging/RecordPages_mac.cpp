#include "korcoreplatform/main/core/logging/RecordPages_p.h"

void TLog::RecordPages::Populate(void* /*pages*/, std::size_t /*bytes*/) noexcept {}
