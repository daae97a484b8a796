// Whole files beside QFile, and the memory that loading a text takes at its peak.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/benchmarks/support/Report.h"
#include "korcoreplatform/benchmarks/support/SampleTexts.h"
#include "korcoreplatform/main/core/files/TFile.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TString.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using PeerTable::Repeat;
using PeerTable::Row;

constexpr int kFileBytes = 64 * 1024 * 1024;
constexpr double kPeakMark = 0.70;

/// Mostly ASCII, with an accent here and there and some words of other scripts.
std::string MixedText()
{
    std::string const block =
        (TString(SampleTexts::Words(3500).c_str()) + TString(SampleTexts::Latin(400).c_str()) +
         TString(SampleTexts::Cyrillic(80).c_str()) + TString(SampleTexts::Chinese(20).c_str()))
            .toStdString();
    std::string text;
    while (text.size() < kFileBytes) {
        text += block;
    }
    return text;
}

std::string AsciiText()
{
    return TString(SampleTexts::Words(kFileBytes).c_str(), kFileBytes).toStdString();
}

QByteArray ReadAll(QString const& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
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

/// What `load` adds to the resident memory at its peak, in KiB, found out in a process of its own.
double PeakKib(std::function<void()> const& load)
{
    int ends[2];
    if (::pipe(ends) != 0) {
        return 0;
    }
    pid_t const child = ::fork();
    if (child == 0) {
        long const before = StatusKib("VmRSS:");
        load();
        long const peak = StatusKib("VmHWM:") - before;
        ::_exit(::write(ends[1], &peak, sizeof(peak)) == sizeof(peak) ? 0 : 1);
    }
    long peak = 0;
    if (::read(ends[0], &peak, sizeof(peak)) != sizeof(peak)) {
        peak = 0;
    }
    ::waitpid(child, nullptr, 0);
    ::close(ends[0]);
    ::close(ends[1]);
    return static_cast<double>(peak);
}

/// Files in a folder that goes with the program.
class SampleFiles
{
    QTemporaryDir m_folder; // before what lies in it

public:
    /// Made when first asked for, which also reports how much memory it takes to load them.
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
        Write(ascii, AsciiText());
        Write(mixed, MixedText());
        AddPeaks("ASCII", ascii);
        AddPeaks("mixed", mixed);
    }

    static void Write(QString const& path, std::string const& text)
    {
        std::ofstream(path.toStdString(), std::ios::binary) << text;
    }

    static void AddPeaks(char const* name, QString const& path)
    {
        Report::Row row = {std::string("load 64 MiB of ") + name + " text, peak memory",
                           "KiB",
                           "less",
                           kPeakMark,
                           "",
                           {{"ours", {}}, {"QString", {}}}};
        for (int round = 0; round != 5; ++round) {
            row.contenders[0].rounds.push_back(PeakKib([&] {
                benchmark::DoNotOptimize(TFile::LoadTextFile(TPath(TString(path)), false));
            }));
            row.contenders[1].rounds.push_back(
                PeakKib([&] { benchmark::DoNotOptimize(ReadText(path)); }));
        }
        Report::Add(std::move(row));
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

TPath PathOf(QString const& path)
{
    return TPath(TString(path));
}

bool WholeFiles()
{
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
