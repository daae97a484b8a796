/// Where the log of a census goes.

#pragma once

namespace TextCensus {

struct Options;

/// Installs the logger that the options ask for, if any, and makes the warnings of Qt its records:
/// where nothing is logged, they are not shown either.
/// Throws: `KorvelException` when the configuration of the log has a value that is no text.
void StartLogging(Options const& options);

} // namespace TextCensus
