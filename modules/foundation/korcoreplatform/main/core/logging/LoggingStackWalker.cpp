#include "korcoreplatform/main/core/logging/LoggingStackWalker.h"

#include "korsys/main/system/TStackWalker.h"
#include "korsys/main/text/THash.h"

namespace {

long long HashOf(LoggingStackWalker::Frames const& frames)
{
    unsigned long hash = 0;
    for (std::string const& frame : frames) {
        hash = THashCombine(hash, THash(frame.data(), frame.size()));
    }
    return static_cast<long long>(hash);
}

} // namespace

TLog::Object::Map LoggingStackWalker::CaptureForLogging(bool force)
{
    if (!force && !TStackWalker::IsActive()) {
        return {{u"stack", TLog::Literal::String(u"disabled")}};
    }
    Frames const frames = ForceGenerateCallstack();
    return {{u"stack-hash", TLog::Literal::Int(HashOf(frames))},
            {u"stack-size", TLog::Literal::Int(static_cast<long long>(frames.size()))},
            {u"stack", TLog::Literal::String(FramesToLogLine(frames))}};
}

TString LoggingStackWalker::FramesToLogLine(Frames const& frames)
{
    std::string line;
    for (std::string const& frame : frames) {
        if (&frame != &frames.front()) {
            line += '\n';
        }
        line += frame;
    }
    return TString::fromStdString(line);
}

TString LoggingStackWalker::CallstackFramesAsString(Frames const& frames)
{
    return FramesToLogLine(frames);
}

LoggingStackWalker::Frames LoggingStackWalker::ForceGenerateCallstack()
{
    StackWalkerConfig config;
    config.framesToSkip = 1; // this function
    TStackWalker walker(config);
    walker.GenerateCallstack();
    return walker.GetCollected();
}

TLog::Object::Map CaptureStackTraceForLogging(bool force)
{
    return LoggingStackWalker::CaptureForLogging(force);
}
