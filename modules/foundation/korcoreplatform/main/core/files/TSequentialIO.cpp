#include "korcoreplatform/main/core/files/TSequentialIO.h"

TSequentialIO::~TSequentialIO() = default;

bool TSequentialIO::AtEnd() const
{
    return Size() < 1;
}

std::vector<char> TSequentialIO::ReadAll()
{
    return AtEnd() ? std::vector<char>() : TIO::Read(static_cast<unsigned long>(Size()));
}
