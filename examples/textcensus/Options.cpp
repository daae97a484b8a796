#include "Options.h"

#include "korcoreplatform/main/string/TFormatString.h"

#include <algorithm>
#include <cstddef>
#include <thread>

namespace TextCensus {
namespace {

constexpr unsigned int kMostJobs = 256;

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
        } else if (word == u"--again") {
            m_result.options.again = true;
        } else if (word == u"--compare-with-file") {
            m_result.options.compareWithFile = true;
        } else if (word == u"--verbose") {
            m_result.options.verbose = true;
        } else if (word == u"--jobs") {
            m_result.options.jobs = ReadJobs(word);
        } else if (word == u"--log") {
            m_result.options.logFolder = ReadArgument(word, u"a folder");
        } else if (word == u"--log-config") {
            m_result.options.logConfig = ReadArgument(word, u"a file");
        } else if (word == u"--help" || word == u"-h") {
            m_result.options.help = true;
        } else {
            m_result.problem = TFormat(u"unknown option: %1", word);
        }
    }

    TString ReadArgument(TString const& option, char16_t const* kind)
    {
        if (m_next == m_arguments.size() || m_arguments[m_next].isEmpty()) {
            m_result.problem = TFormat(u"%1 needs %2", option, kind);
            return TString();
        }
        return m_arguments[m_next++];
    }

    unsigned int ReadJobs(TString const& option)
    {
        TString const kind = TFormat(u"a number from 0 to %1", kMostJobs);
        bool isNumber = false;
        unsigned int const jobs = ReadArgument(option, kind.constData()).toUInt(&isNumber);
        if (!isNumber || jobs > kMostJobs) {
            m_result.problem = TFormat(u"%1 needs %2", option, kind);
        }
        return jobs > 0 ? jobs : std::max(1U, std::thread::hardware_concurrency());
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
    if (commandLine.problem.isEmpty() && !options.help && options.again != options.roots.empty()) {
        commandLine.problem = options.again ? u"--again goes without files and folders"
                                            : u"name at least one file or folder";
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
           u"  --again            count what the last run counted, instead of naming it\n"
           u"  --compare-with-file\n"
           u"                     have the program \"file\" look at up to 500 of the files as "
           u"well,\n"
           u"                     and tell where it finds the same encoding\n"
           u"  --jobs N           count with N threads (default: 1); 0: one a processor\n"
           u"  --log DIR          log from info on, into a file in DIR: textcensus_TIME.log\n"
           u"  --verbose          log from debug on\n"
           u"  --log-config FILE  log each category of records from the severity that FILE names,\n"
           u"                     as examples/textcensus/log-config.json does; the others,\n"
           u"                     without --log and --verbose, from warn on\n"
           u"  -h, --help         print this text\n"
           u"  --                 take everything that follows as a path\n"
           u"\n"
           u"Links to files are followed. Links to folders are followed when named and skipped\n"
           u"below a folder, as is what is neither file nor folder: pipes, sockets and devices\n"
           u"are never opened. A file that is reached twice counts twice. A name that is not\n"
           u"UTF-8 cannot be read. A code unit is 16 bits of UTF-16; a line ends at LF, CR LF or\n"
           u"CR, and its length is without them.\n"
           u"\n"
           u"The log tells the start and the machine, each folder (debug) and file (trace) with "
           u"the time it took,\n"
           u"both in the category ListFilesTimings, what could not be read, and the sums of each\n"
           u"phase and thread. In DIR it is one JSON object a line; the end of the run shows how\n"
           u"to read it. Without --log it goes to standard error, as lines for people, and no\n"
           u"progress is shown. Without any of the three options nothing is logged. Severities\n"
           u"are trace, debug, info, warn, error, fatal and off.\n"
           u"\n"
           u"Exit status: 0; 1 when something could not be read (it is listed, the rest is\n"
           u"counted) or the report not be written; 2 when the command line is wrong, DIR cannot "
           u"be\n"
           u"written to, or the severities in FILE are no texts.\n";
}

} // namespace TextCensus
