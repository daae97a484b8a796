#include "Output.h"

#include <cerrno>
#include <cstdio>

namespace TextCensus {
namespace {

int Write(std::string const& bytes, std::FILE* stream)
{
    errno = 0;
    bool const isWritten = std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
    if (isWritten && std::fflush(stream) == 0) {
        return 0;
    }
    return errno != 0 ? errno : EIO;
}

} // namespace

int WriteToStandardOutput(TString const& text)
{
    return Write(text.toStdString(), stdout);
}

void WriteToStandardError(TString const& text)
{
    WriteToStandardError(text.toStdString());
}

void WriteToStandardError(std::string const& utf8)
{
    Write(utf8, stderr);
}

} // namespace TextCensus
