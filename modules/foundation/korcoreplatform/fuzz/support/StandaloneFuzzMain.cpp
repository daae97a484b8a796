/// Runs a fuzzer where the compiler brings no fuzzing engine: on the files given, then on
/// pseudo-random mutations of them for as long, or as often, as asked.
///
///     TPathFuzz [-max_total_time=SECONDS] [-runs=COUNT] [-artifact_prefix=PREFIX] [FILE|FOLDER]...
///
/// The options are named as the engine of clang names them; its others are ignored. A run with the
/// same files goes through the same inputs. An input that ends the process stands in `crash-input`
/// behind the prefix.

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

// There only in a program built with a sanitizer.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace {

constexpr std::size_t kMaxLength = 4096;

std::vector<std::string> s_inputs;
std::string s_current;
std::string s_artifact = "crash-input";
std::mt19937 s_random; // NOLINT: the same inputs at each run

void addInput(std::filesystem::path const& path)
{
    std::ifstream file(path, std::ios::binary);
    s_inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::size_t below(std::size_t bound)
{
    return s_random() % bound;
}

/// An input with one to eight small changes: bytes replaced, put in or taken out. What comes in are
/// bytes at which text formats change their mind, any bytes, or a piece of an input.
std::string nextInput()
{
    static std::string const s_telling(
        "\0\1%09\n\r \"\\-.\x7f\x80\xbf\xc0\xd8\xdc\xed\xef\xf4\xfe\xff", 23);
    std::string bytes = s_inputs[below(s_inputs.size())];
    for (std::size_t left = 1 + below(8); left > 0; --left) {
        std::string const& other = s_inputs[below(s_inputs.size())];
        std::string const added[] = {std::string(1 + below(4), s_telling[below(s_telling.size())]),
                                     std::string(1 + below(4), static_cast<char>(s_random())),
                                     other.substr(below(other.size() + 1), below(other.size() + 1)),
                                     ""};
        std::size_t const kind = below(4);
        bool const removes = kind == 3 || below(2) == 0;
        std::size_t const at = below(bytes.size() + 1);
        bytes.replace(at, removes ? below(bytes.size() - at + 1) : 0, added[kind]);
    }
    return bytes.substr(0, kMaxLength);
}

void keepCurrentInput()
{
    std::ofstream(s_artifact, std::ios::binary) << s_current;
    std::fprintf(stderr, "the failing input is in %s\n", s_artifact.c_str());
}

void runOne(std::string const& input)
{
    s_current = input;
    LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(input.data()), input.size());
}

} // namespace

int main(int argc, char** argv)
{
    std::map<std::string, std::string> options = {{"-max_total_time", "0"}, {"-runs", "0"}};
    for (int i = 1; i < argc; ++i) {
        std::string const argument = argv[i];
        if (argument[0] == '-') {
            std::size_t const name = argument.find('=');
            options[argument.substr(0, name)] = argument.substr(name + 1);
        } else if (!std::filesystem::is_directory(argument)) {
            addInput(argument);
        } else {
            for (auto const& entry : std::filesystem::directory_iterator(argument)) {
                addInput(entry);
            }
        }
    }
    s_artifact = options["-artifact_prefix"] + s_artifact;
    if (__sanitizer_set_death_callback != nullptr) {
        __sanitizer_set_death_callback(keepCurrentInput);
    }
    std::signal(SIGABRT, [](int) { keepCurrentInput(); });
    for (std::string const& input : s_inputs) {
        runOne(input);
    }
    std::size_t runs = s_inputs.size();
    s_inputs.emplace_back(); // what a run without files begins with
    using Clock = std::chrono::steady_clock;
    std::chrono::duration<double> const time(std::stod(options["-max_total_time"]));
    std::size_t const wantedRuns = std::stoul(options["-runs"]);
    for (auto const end = Clock::now() + time; runs < wantedRuns || Clock::now() < end; ++runs) {
        runOne(nextInput());
    }
    std::printf("%zu inputs, no failure\n", runs);
    return 0;
}
