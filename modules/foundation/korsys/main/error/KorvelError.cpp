#include "korsys/main/error/KorvelError.h"

#include <utility>

KorvelError::KorvelError(unsigned int id, TStringCore&& name) noexcept
    : m_id(id), m_name(std::move(name))
{}

KorvelError KorvelError::MakeError(unsigned int id, TStringCore name)
{
    return KorvelError(id, std::move(name));
}
