// The lines of a file beside QTextStream.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/benchmarks/support/SampleTexts.h"
#include "korcoreplatform/main/core/files/TTextStream.h"
#include "korcoreplatform/main/string/TString.h"

#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <QVector>

#include <fstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

using PeerTable::Repeat;
using PeerTable::Row;

constexpr int kFileBytes = 64 * 1024 * 1024;

/// A file of lines of some ten words, in a folder that goes with the program.
class LinesFile
{
public:
    LinesFile() : m_path(m_folder.filePath("lines"))
    {
        std::u16string text = SampleTexts::Words(kFileBytes);
        for (std::size_t i = 0, words = 0; i < text.size(); ++i) {
            if (text[i] == u' ' && ++words % 10 == 0) {
                text[i] = u'\n';
            }
        }
        std::ofstream(m_path.toStdString(), std::ios::binary)
            << TString(text.c_str(), kFileBytes).toStdString();
    }

    static QString Path()
    {
        static LinesFile const s_file; // made when first asked for
        return s_file.m_path;
    }

private:
    QTemporaryDir m_folder;
    QString m_path;
};

/// Runs `once(stream)` on the file, opened afresh each time.
template <class Stream, class Once>
PeerTable::Task OnLines(Once once)
{
    return [once](benchmark::State& state) {
        QString const path = LinesFile::Path();
        Repeat([&] {
            QFile file(path);
            file.open(QIODevice::ReadOnly);
            Stream stream(&file);
            return once(stream);
        })(state);
    };
}

/// The bytes of the file, in pieces.
void SystemRead(benchmark::State& state)
{
    std::string const path = LinesFile::Path().toStdString();
    std::vector<char> memory(1 << 16);
    PeerTable::RepeatAction([&] {
        int const file = ::open(path.c_str(), O_RDONLY);
        while (::read(file, memory.data(), memory.size()) > 0) {}
        ::close(file);
    })(state);
}

bool Lines()
{
    Row("walk through the lines of 64 MiB", 1.1)
        .Ours(OnLines<TTextStream>([](TTextStream& stream) {
            std::size_t units = 0;
            for (auto line = stream.LinesBegin(); line != stream.LinesEnd(); ++line) {
                units += static_cast<std::size_t>(line->length());
            }
            return units;
        }))
        .Peer("QTextStream", OnLines<QTextStream>([](QTextStream& stream) {
                  std::size_t units = 0;
                  while (!stream.atEnd()) {
                      units += static_cast<std::size_t>(stream.readLine().size());
                  }
                  return units;
              }))
        .Limit("read", &SystemRead);
    Row("all lines of 64 MiB in a list", 1.1)
        .Ours(
            OnLines<TTextStream>([](TTextStream& stream) { return stream.ReadAllLines().size(); }))
        .Peer("QTextStream", OnLines<QTextStream>([](QTextStream& stream) {
                  QVector<QString> lines;
                  while (!stream.atEnd()) {
                      lines.append(stream.readLine());
                  }
                  return lines.size();
              }))
        .Limit("read", &SystemRead);
    return true;
}

[[maybe_unused]] bool const s_registered = Lines();

} // namespace
