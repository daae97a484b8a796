#include "korcoreplatform/main/core/files/TIO.h"

#include "korcoreplatform/main/core/files/ReadIntoVector_p.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/ThrowError.h"

#include <QIODevice>
#include <QString>

#include <cstring>

TIO::~TIO() = default;

bool TIO::Flush()
{
    return true;
}

TString TIO::ErrorString() const
{
    QIODevice const* const device = GetQIODevice();
    return device == nullptr ? TString() : TString(device->errorString());
}

QIODevice const* TIO::GetQIODevice() const
{
    return const_cast<TIO*>(this)->GetQIODevice(); // asking changes no stream
}

QIODevice* TIO::GetQIODeviceOrThrow()
{
    QIODevice* const device = GetQIODevice();
    if (device == nullptr) {
        ThrowError<Exception>(TString(u"GetQIODevice() returned nullptr."),
                              &KorErrorsError::AutoGen_0x16CDB0C3);
    }
    return device;
}

QIODevice const* TIO::GetQIODeviceOrThrow() const
{
    return const_cast<TIO*>(this)->GetQIODeviceOrThrow();
}

std::vector<char> TIO::Read(unsigned long n)
{
    auto const read = [this](void* buffer, long long max) { return Read(buffer, max); };
    return ReadIntoVector(*this, n, read, &KorErrorsError::AutoGen_0x15B14D91);
}

long long TIO::Write(char const* text)
{
    return Write(text, static_cast<long long>(std::strlen(text)));
}

long long TIO::Write(std::vector<char> const& data)
{
    return Write(data.data(), static_cast<long long>(data.size()));
}

TIO::Exception::Exception(TString const& message, TError::ErrorInfo const& errorInfo)
    : KorvelException(message, errorInfo)
{}

TIO::Exception::~Exception() = default;

TIO::Exception* TIO::Exception::Clone() const
{
    return new Exception(*this);
}

void TIO::Exception::Throw() const
{
    throw Exception(*this);
}
