#include "korcoreplatform/main/core/files/TRandomIO.h"

#include "korcoreplatform/main/core/files/ReadIntoVector_p.h"
#include "korsys/main/error/KorErrorsError.h"

TRandomIO::~TRandomIO() = default;

bool TRandomIO::AtEnd() const
{
    return Pos() >= Size();
}

std::vector<char> TRandomIO::ReadAll()
{
    return AtEnd() ? std::vector<char>() : TIO::Read(static_cast<unsigned long>(Size() - Pos()));
}

std::vector<char> TRandomIO::Peek(unsigned long n)
{
    auto const peek = [this](void* buffer, long long max) { return Peek(buffer, max); };
    return ReadIntoVector(*this, n, peek, &KorErrorsError::AutoGen_0x7A55F773);
}
