/// Runs a fuzzer where the compiler brings no fuzzing engine: on the files given, then on
/// pseudo-random mutations of them for as long as asked.
///
///     TStringFuzz [-max_total_time=SECONDS] [-seed=NUMBER] [-max_len=BYTES] [FILE|FOLDER]...
///
/// The options are named as the engine of clang names them; its others are ignored. A run with the
/// same seed and files goes through the same inputs. An input that ends the process stands in
/// `crash-input` in the current folder, or below the folder that -artifact_prefix names.

#include <algorithm>
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

void addInput(Options& options, std::filesystem::path const& path)
{
    std::ifstream file(path, std::ios::binary);
    options.inputs.emplace_back(std::istreambuf_iterator<char>(file),
                                std::istreambuf_iterator<char>());
}

Options readArguments(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        std::string const argument = argv[i];
        std::size_t const equals = argument.find('=');
        std::string const name = argument.substr(0, equals);
        std::string const value = argument.substr(equals + 1); // of no use without "="
        if (name == "-max_total_time") {
            options.seconds = std::stod(value);
        } else if (name == "-seed") {
            options.seed = static_cast<unsigned>(std::stoul(value));
        } else if (name == "-max_len") {
            options.maxLength = std::stoul(value);
        } else if (name == "-artifact_prefix") {
            options.artifactPrefix = value;
        } else if (std::filesystem::is_directory(argument)) {
            for (auto const& entry : std::filesystem::recursive_directory_iterator(argument)) {
                if (entry.is_regular_file()) {
                    addInput(options, entry);
                }
            }
        } else if (argument.empty() || argument[0] != '-') {
            addInput(options, argument);
        }
    }
    return options;
}

std::mt19937 s_random;

std::size_t below(std::size_t bound)
{
    return bound == 0 ? 0 : s_random() % bound;
}

/// A few bytes: those at which text formats change their mind, any bytes, a piece of an input.
Bytes someBytes(std::vector<Bytes> const& inputs)
{
    static constexpr std::uint8_t kTelling[] = {0,    1,    '%',  '0',  '9',  '\n', '\r', ' ',
                                                '"',  '\\', '-',  '.',  0x7f, 0x80, 0xbf, 0xc0,
                                                0xd8, 0xdc, 0xed, 0xef, 0xf4, 0xfe, 0xff};
    Bytes const& input = inputs[below(inputs.size())];
    auto const from = input.begin() + static_cast<std::ptrdiff_t>(below(input.size()));
    switch (below(3)) {
    case 0:
        return Bytes(1 + below(4), kTelling[below(std::size(kTelling))]);
    case 1:
        return Bytes(1 + below(4), static_cast<std::uint8_t>(s_random()));
    default:
        return Bytes(from, from + static_cast<std::ptrdiff_t>(below(input.end() - from + 1u)));
    }
}

/// An input with one to eight small changes: bits flipped, bytes replaced, put in or taken out.
Bytes nextInput(std::vector<Bytes> const& inputs, std::size_t maxLength)
{
    Bytes bytes = inputs[below(inputs.size())];
    for (std::size_t left = 1 + below(8); left > 0; --left) {
        auto const at = bytes.begin() + static_cast<std::ptrdiff_t>(below(bytes.size() + 1));
        if (at != bytes.end() && below(4) == 0) {
            *at = static_cast<std::uint8_t>(*at ^ (1u << below(8)));
            continue;
        }
        Bytes const added = below(4) == 0 ? Bytes() : someBytes(inputs);
        std::size_t const rest = static_cast<std::size_t>(bytes.end() - at);
        std::size_t const removed = added.empty() || below(2) == 0 ? below(rest + 1) : 0;
        auto const place = bytes.erase(at, at + static_cast<std::ptrdiff_t>(removed));
        bytes.insert(place, added.begin(), added.end());
    }
    bytes.resize(std::min(bytes.size(), maxLength));
    return bytes;
}

Bytes const* s_current = nullptr;
std::string s_artifact;

void keepCurrentInput()
{
    if (s_current != nullptr) {
        std::ofstream(s_artifact, std::ios::binary)
            .write(reinterpret_cast<char const*>(s_current->data()),
                   static_cast<std::streamsize>(s_current->size()));
        std::fprintf(stderr, "the failing input is in %s\n", s_artifact.c_str());
        s_current = nullptr;
    }
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
    s_random.seed(options.seed);
    using Clock = std::chrono::steady_clock;
    auto const end = Clock::now() + std::chrono::duration<double>(options.seconds);
    for (; Clock::now() < end; ++runs) {
        runOne(nextInput(options.inputs, options.maxLength));
    }
    std::printf("%zu inputs, no failure\n", runs);
    return 0;
}
