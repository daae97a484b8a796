#include "Options.h"

#include "korcoreplatform/main/string/TFormatString.h"

namespace TextCensus {
namespace {

void ReadOption(TString const& word, CommandLine& commandLine)
{
    if (word == u"--json") {
        commandLine.options.json = true;
    } else if (word == u"--help" || word == u"-h") {
        commandLine.options.help = true;
    } else {
        commandLine.problem = TFormat(u"unknown option: %1", word);
    }
}

} // namespace

CommandLine ReadCommandLine(int argc, char const* const* argv)
{
    CommandLine commandLine;
    Options const& options = commandLine.options;
    bool onlyPaths = false;
    for (int i = 1; i < argc && commandLine.problem.isEmpty(); ++i) {
        TString const word = TString::fromUtf8(argv[i]);
        if (onlyPaths || word == u"-" || !word.startsWith(u'-')) {
            commandLine.options.roots.emplace_back(argv[i]);
        } else if (word == u"--") {
            onlyPaths = true;
        } else {
            ReadOption(word, commandLine);
        }
    }
    if (commandLine.problem.isEmpty() && !options.help && options.roots.empty()) {
        commandLine.problem = u"name at least one file or folder";
    }
    return commandLine;
}

TString UsageLine()
{
    return u"usage: textcensus [--json] PATH...   (textcensus --help tells more)\n";
}

TString HelpText()
{
    return u"usage: textcensus [--json] PATH...\n"
           u"\n"
           u"Reads the files named, and every file below the folders named (\".\" is the current\n"
           u"one), finds out how each encodes its text, decodes it and reports what was found:\n"
           u"files, bytes, code units and lines in all, by encoding, by line ending and by\n"
           u"byte-order mark; the files with bytes that are no text in their encoding; the ten\n"
           u"longest lines.\n"
           u"\n"
           u"  --json      print the report as one JSON object, with every file that the table\n"
           u"              only counts\n"
           u"  -h, --help  print this text\n"
           u"  --          take everything that follows as a path\n"
           u"\n"
           u"Links to files are followed. Links to folders are followed when named and skipped\n"
           u"below a folder, as is what is neither file nor folder: pipes, sockets and devices "
           u"are\n"
           u"never opened. A file that is reached twice counts twice. A code unit is 16 bits of\n"
           u"UTF-16; a line ends at LF, CR LF or CR, and its length is without them.\n"
           u"\n"
           u"Exit status: 0; 1 when something could not be read (it is listed, the rest is\n"
           u"counted) or the report not be written; 2 when the command line is wrong.\n";
}

} // namespace TextCensus
