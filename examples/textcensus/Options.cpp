#include "Options.h"

#include "korcoreplatform/main/string/TFormatString.h"

#include <cstddef>

namespace TextCensus {
namespace {

/// Goes through the arguments one by one.
class Reader
{
public:
    explicit Reader(std::vector<TString> const& arguments) : m_arguments(arguments) {}

    CommandLine Read()
    {
        bool onlyPaths = false;
        while (m_next < m_arguments.size() && m_result.problem.isEmpty()) {
            TString const& word = m_arguments[m_next++];
            if (onlyPaths || word == u"-" || !word.startsWith(u'-')) {
                m_result.options.roots.emplace_back(word);
            } else if (word == u"--") {
                onlyPaths = true;
            } else {
                ReadOption(word);
            }
        }
        return m_result;
    }

private:
    void ReadOption(TString const& word)
    {
        if (word == u"--json") {
            m_result.options.json = true;
        } else if (word == u"--verbose") {
            m_result.options.verbose = true;
        } else if (word == u"--log-config") {
            m_result.options.logConfig = ReadFile(word);
        } else if (word == u"--help" || word == u"-h") {
            m_result.options.help = true;
        } else {
            m_result.problem = TFormat(u"unknown option: %1", word);
        }
    }

    TPath ReadFile(TString const& option)
    {
        if (m_next == m_arguments.size() || m_arguments[m_next].isEmpty()) {
            m_result.problem = TFormat(u"%1 needs a file", option);
            return TPath();
        }
        return m_arguments[m_next++];
    }

    std::vector<TString> const& m_arguments;
    std::size_t m_next = 0;
    CommandLine m_result;
};

} // namespace

CommandLine ReadCommandLine(std::vector<TString> const& arguments)
{
    CommandLine commandLine = Reader(arguments).Read();
    Options const& options = commandLine.options;
    if (commandLine.problem.isEmpty() && !options.help && options.roots.empty()) {
        commandLine.problem = u"name at least one file or folder";
    }
    return commandLine;
}

TString UsageLine()
{
    return u"usage: textcensus [OPTION]... PATH...   (textcensus --help tells more)\n";
}

TString HelpText()
{
    return u"usage: textcensus [OPTION]... PATH...\n"
           u"\n"
           u"Reads the files named, and every file below the folders named (\".\" is the current\n"
           u"one), finds out how each encodes its text, decodes it and reports what was found:\n"
           u"files, bytes, code units and lines in all, by encoding, by line ending and by\n"
           u"byte-order mark; the files with bytes that are no text in their encoding; the ten\n"
           u"longest lines.\n"
           u"\n"
           u"  --json             print the report as one JSON object, with every file that the\n"
           u"                     table only counts\n"
           u"  --verbose          log from debug on\n"
           u"  --log-config FILE  log from warn on, and each category of records from the\n"
           u"                     severity that FILE names: {\"ListFilesTimings\": \"debug\"}\n"
           u"  -h, --help         print this text\n"
           u"  --                 take everything that follows as a path\n"
           u"\n"
           u"Links to files are followed. Links to folders are followed when named and skipped\n"
           u"below a folder, as is what is neither file nor folder: pipes, sockets and devices\n"
           u"are never opened. A file that is reached twice counts twice. A name that is not\n"
           u"UTF-8 cannot be read. A code unit is 16 bits of UTF-16; a line ends at LF, CR LF or\n"
           u"CR, and its length is without them.\n"
           u"\n"
           u"The log goes to standard error, one JSON object a line: the start, each folder with\n"
           u"the time it took (category ListFilesTimings), what could not be read, the sums of\n"
           u"each phase. Without --verbose and --log-config nothing is logged; with them no\n"
           u"progress is shown. Severities are trace, debug, info, warn, error, fatal and off.\n"
           u"\n"
           u"Exit status: 0; 1 when something could not be read (it is listed, the rest is\n"
           u"counted) or the report not be written; 2 when the command line is wrong, or the\n"
           u"severities in FILE are no texts.\n";
}

} // namespace TextCensus
