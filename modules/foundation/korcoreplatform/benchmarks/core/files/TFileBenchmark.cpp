// Whole files beside QFile, and the memory that loading a text takes at its peak.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/benchmarks/support/Rounds.h"
#include "korcoreplatform/benchmarks/support/SampleTexts.h"
#include "korcoreplatform/main/core/files/TFile.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TString.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

using PeerTable::Repeat;
using PeerTable::Row;

constexpr std::size_t kFileBytes = 64 * 1024 * 1024;
constexpr char kPeak[] = "peak memory, KiB";

std::string AsciiText()
{
    return TString(SampleTexts::Words(100000).c_str()).toStdString();
}

/// Mostly ASCII, with an accent here and there and some words of other scripts.
std::string MixedText()
{
    return (TString(SampleTexts::Words(3500).c_str()) + TString(SampleTexts::Latin(400).c_str()) +
            TString(SampleTexts::Cyrillic(80).c_str()) + TString(SampleTexts::Chinese(20).c_str()))
        .toStdString();
}

/// Fills a file with the same text again and again.
void WriteFile(std::filesystem::path const& path, std::string const& text)
{
    std::ofstream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.open(path, std::ios::binary);
    for (std::size_t size = 0; size < kFileBytes; size += text.size()) {
        file << text;
    }
    file.close();
}

TPath PathOf(QString const& path)
{
    return TPath(TString(path));
}

QByteArray ReadAll(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("cannot read " + path.toStdString());
    }
    return file.readAll();
}

QString ReadText(QString const& path)
{
    return QString::fromUtf8(ReadAll(path));
}

/// A line of this process's status, in KiB.
long StatusKib(std::string const& key)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.compare(0, key.size(), key) == 0) {
            return std::atol(line.c_str() + key.size());
        }
    }
    return 0;
}

/// What `load` adds to the resident memory at its peak when it is given a file of such a text.
Rounds::Task AddedMemory(std::string const& text, std::function<void(QString const&)> const& load)
{
    return [=](Rounds::Run const& run) {
        std::filesystem::path const file = run.folder / "text";
        WriteFile(file, text);
        QString const path = QString::fromStdString(file.string());
        long const before = StatusKib("VmRSS:");
        load(path);
        return Rounds::Measures{{kPeak, static_cast<double>(StatusKib("VmHWM:") - before)}};
    };
}

/// Files in a folder that goes with the program.
class SampleFiles
{
    QTemporaryDir m_folder; // before what lies in it

public:
    /// Made when first asked for.
    static SampleFiles const& Get()
    {
        static SampleFiles const s_files;
        return s_files;
    }

    QString ascii;
    QString mixed;

private:
    SampleFiles() : ascii(m_folder.filePath("ascii")), mixed(m_folder.filePath("mixed"))
    {
        WriteFile(ascii.toStdString(), AsciiText());
        WriteFile(mixed.toStdString(), MixedText());
    }
};

/// Reads a file into memory that is there already.
PeerTable::Task SystemRead(QString SampleFiles::*file)
{
    return [file](benchmark::State& state) {
        std::string const path = (SampleFiles::Get().*file).toStdString();
        std::vector<char> memory(kFileBytes);
        Repeat([&] {
            int const stream = ::open(path.c_str(), O_RDONLY);
            ::ssize_t const size = ::read(stream, memory.data(), memory.size());
            ::close(stream);
            return size;
        })(state);
    };
}

void MemoryOf(char const* name, std::string const& text)
{
    Rounds::Scenario(std::string("load 64 MiB of ") + name + " text", 1)
        .Contender("ours", AddedMemory(text,
                                       [](QString const& path) {
                                           benchmark::DoNotOptimize(
                                               TFile::LoadTextFile(PathOf(path), false));
                                       }))
        .Contender("QString",
                   AddedMemory(
                       text, [](QString const& path) { benchmark::DoNotOptimize(ReadText(path)); }))
        .AtMost(kPeak, 0.7);
}

bool WholeFiles()
{
    MemoryOf("ASCII", AsciiText());
    MemoryOf("mixed", MixedText());
    Row("load 64 MiB of ASCII text", 0.75)
        .Ours([](benchmark::State& state) {
            TPath const path = PathOf(SampleFiles::Get().ascii);
            Repeat([&] { return TFile::LoadTextFile(path, false); })(state);
        })
        .Peer("QString",
              [](benchmark::State& state) {
                  Repeat([] { return ReadText(SampleFiles::Get().ascii); })(state);
              })
        .Limit("read", SystemRead(&SampleFiles::ascii));
    Row("load 64 MiB of mixed text", 0.75)
        .Ours([](benchmark::State& state) {
            TPath const path = PathOf(SampleFiles::Get().mixed);
            Repeat([&] { return TFile::LoadTextFile(path, false); })(state);
        })
        .Peer("QString",
              [](benchmark::State& state) {
                  Repeat([] { return ReadText(SampleFiles::Get().mixed); })(state);
              })
        .Limit("read", SystemRead(&SampleFiles::mixed));
    Row("load 64 MiB as UTF-8", 1.05)
        .Ours([](benchmark::State& state) {
            TPath const path = PathOf(SampleFiles::Get().mixed);
            Repeat([&] { return TFile::LoadUtf8File(path, false); })(state);
        })
        .Peer("QFile",
              [](benchmark::State& state) {
                  Repeat([] { return ReadAll(SampleFiles::Get().mixed); })(state);
              })
        .Limit("read", SystemRead(&SampleFiles::mixed));
    Row("load 64 MiB as bytes", 1.05)
        .Ours([](benchmark::State& state) {
            TPath const path = PathOf(SampleFiles::Get().mixed);
            Repeat([&] { return TFile::LoadBinaryFile(path); })(state);
        })
        .Peer("QFile",
              [](benchmark::State& state) {
                  Repeat([] { return ReadAll(SampleFiles::Get().mixed); })(state);
              })
        .Limit("read", SystemRead(&SampleFiles::mixed));
    return true;
}

[[maybe_unused]] bool const s_registered = WholeFiles();

} // namespace
