/// Runs a fuzzer where the compiler brings no fuzzing engine: on the files given, then on
/// pseudo-random mutations of them for as long as asked.
///
///     TStringFuzz [-max_total_time=SECONDS] [-seed=NUMBER] [-max_len=BYTES] [FILE|FOLDER]...
///
/// The options are named as the engine of clang names them; its others are ignored. A run with the
/// same seed and files goes through the same inputs. An input that ends the process stands in
/// `crash-input` in the current folder, or below the folder that -artifact_prefix names.

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

// There only in a program built with a sanitizer.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Options
{
    double seconds = 0;
    unsigned seed = 1;
    std::size_t maxLength = 4096;
    std::string artifactPrefix;
    std::vector<Bytes> inputs;
};

Bytes readFile(std::filesystem::path const& path)
{
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void addInputs(Options& options, std::filesystem::path const& path)
{
    if (!std::filesystem::is_directory(path)) {
        options.inputs.push_back(readFile(path));
        return;
    }
    for (auto const& entry : std::filesystem::recursive_directory_iterator(path)) {
        if (entry.is_regular_file()) {
            options.inputs.push_back(readFile(entry.path()));
        }
    }
}

bool takeValue(std::string const& argument, std::string const& name, std::string& value)
{
    if (argument.compare(0, name.size(), name) != 0) {
        return false;
    }
    value = argument.substr(name.size());
    return true;
}

Options readArguments(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        std::string const argument = argv[i];
        std::string value;
        if (takeValue(argument, "-max_total_time=", value)) {
            options.seconds = std::stod(value);
        } else if (takeValue(argument, "-seed=", value)) {
            options.seed = static_cast<unsigned>(std::stoul(value));
        } else if (takeValue(argument, "-max_len=", value)) {
            options.maxLength = std::stoul(value);
        } else if (takeValue(argument, "-artifact_prefix=", value)) {
            options.artifactPrefix = value;
        } else if (argument.empty() || argument[0] != '-') {
            addInputs(options, argument);
        }
    }
    return options;
}

/// One to eight small changes: bytes set, flipped, added, taken out, doubled, or the tail of
/// another input.
class Mutator
{
public:
    Mutator(unsigned seed, std::size_t maxLength) : m_random(seed), m_maxLength(maxLength) {}

    Bytes next(std::vector<Bytes> const& inputs)
    {
        Bytes bytes = inputs[below(inputs.size())];
        for (std::size_t left = 1 + below(8); left > 0; --left) {
            change(bytes, inputs);
        }
        if (bytes.size() > m_maxLength) {
            bytes.resize(m_maxLength);
        }
        return bytes;
    }

private:
    std::size_t below(std::size_t bound) { return bound == 0 ? 0 : m_random() % bound; }

    std::uint8_t byte()
    {
        // Bytes at which text formats change their mind, beside any byte at all.
        static constexpr std::uint8_t kTelling[] = {0,    1,    '%',  '0',  '9',  '\n', '\r', ' ',
                                                    '"',  '\\', '-',  '.',  0x7f, 0x80, 0xbf, 0xc0,
                                                    0xd8, 0xdc, 0xed, 0xef, 0xf4, 0xfe, 0xff};
        return below(2) == 0 ? kTelling[below(std::size(kTelling))]
                             : static_cast<std::uint8_t>(m_random());
    }

    void change(Bytes& bytes, std::vector<Bytes> const& inputs)
    {
        auto const at = bytes.begin() + static_cast<std::ptrdiff_t>(below(bytes.size() + 1));
        auto const rest = static_cast<std::size_t>(bytes.end() - at);
        if (rest == 0 || below(6) == 0) {
            bytes.insert(at, 1 + below(4), byte());
            return;
        }
        switch (below(5)) {
        case 0:
            *at = byte();
            break;
        case 1:
            *at = static_cast<std::uint8_t>(*at ^ (1u << below(8)));
            break;
        case 2:
            bytes.erase(at, at + static_cast<std::ptrdiff_t>(1 + below(rest)));
            break;
        case 3: {
            Bytes const piece(at, at + static_cast<std::ptrdiff_t>(1 + below(rest)));
            bytes.insert(at, piece.begin(), piece.end());
            break;
        }
        default: {
            Bytes const& other = inputs[below(inputs.size())];
            bytes.erase(at, bytes.end());
            bytes.insert(bytes.end(),
                         other.begin() + static_cast<std::ptrdiff_t>(below(other.size())),
                         other.end());
            break;
        }
        }
    }

    std::mt19937 m_random;
    std::size_t m_maxLength;
};

Bytes const* s_current = nullptr;
std::string s_artifact;

void keepCurrentInput()
{
    if (s_current == nullptr) {
        return;
    }
    std::ofstream file(s_artifact, std::ios::binary);
    file.write(reinterpret_cast<char const*>(s_current->data()),
               static_cast<std::streamsize>(s_current->size()));
    std::fprintf(stderr, "the failing input is in %s\n", s_artifact.c_str());
    s_current = nullptr;
}

void runOne(Bytes const& input)
{
    s_current = &input;
    LLVMFuzzerTestOneInput(input.data(), input.size());
    s_current = nullptr;
}

} // namespace

int main(int argc, char** argv)
{
    Options options = readArguments(argc, argv);
    s_artifact = options.artifactPrefix + "crash-input";
    if (__sanitizer_set_death_callback != nullptr) {
        __sanitizer_set_death_callback(keepCurrentInput);
    }
    std::signal(SIGABRT, [](int) { keepCurrentInput(); });

    for (Bytes const& input : options.inputs) {
        runOne(input);
    }
    std::size_t runs = options.inputs.size();
    if (options.inputs.empty()) {
        options.inputs.emplace_back();
    }
    Mutator mutator(options.seed, options.maxLength);
    using Clock = std::chrono::steady_clock;
    auto const end = Clock::now() + std::chrono::duration<double>(options.seconds);
    for (; Clock::now() < end; ++runs) {
        runOne(mutator.next(options.inputs));
    }
    std::printf("%zu inputs, no failure\n", runs);
    return 0;
}
