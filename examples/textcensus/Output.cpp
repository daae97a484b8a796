#include "Output.h"

#include <cerrno>
#include <cstdio>
#include <string>

namespace TextCensus {
namespace {

int Write(TString const& text, std::FILE* stream)
{
    std::string const bytes = text.toStdString();
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
    return Write(text, stdout);
}

void WriteToStandardError(TString const& text)
{
    Write(text, stderr);
}

} // namespace TextCensus
