#include "korcoreplatform/main/core/files/FillAhead_p.h"

// This system is not asked: nothing is left to bring in.

FillAhead::FillAhead(void* /*block*/, std::size_t /*bytes*/) noexcept : m_begin(0), m_end(0) {}

void FillAhead::BringIn() noexcept {}
