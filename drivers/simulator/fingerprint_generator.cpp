// scribera-sim-fingerprint: writes a synthetic fingerprint as a PGM picture.
#include "files.h"
#include "fingerprint.h"
#include "recording.h"
#include "words.h"

#include <cstdio>
#include <string>

namespace {

constexpr char Usage[] = "usage: scribera-sim-fingerprint --pattern NAME [--seed N] [-o FILE]\n"
                         "Writes a synthetic fingerprint as a grey PGM picture of 208x288 pixels.\n\n"
                         "  --pattern NAME  ridges: loop, whorl or arch\n"
                         "  --seed N        0 or a positive integer, default 1; the same seed gives the same "
                         "bytes\n"
                         "  -o FILE         file to write, default standard output\n"
                         "  --help          this text\n"
                         "  --version       name and version\n\n"
                         "Exit code: 0 done, 1 the file cannot be written, 2 wrong arguments.\n";

int refuseArguments(const std::string& reason)
{
    std::fprintf(stderr, "scribera-sim-fingerprint: %s\nTry 'scribera-sim-fingerprint --help'.\n",
                 reason.c_str());
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    std::optional<simulator::RidgePattern> pattern;
    std::int64_t seed = 1;
    std::string output = "-";
    for (int index = 1; index < argc; ++index) {
        const std::string option = argv[index];
        if (option == "--help" || option == "-h") {
            std::fputs(Usage, stdout);
            return 0;
        }
        if (option == "--version") {
            std::puts("scribera-sim-fingerprint " SCRIBERA_VERSION);
            return 0;
        }
        if (option != "--pattern" && option != "--seed" && option != "-o")
            return refuseArguments("unknown argument '" + option + "'");
        if (++index == argc)
            return refuseArguments(option + " needs a value");
        const std::string value = argv[index];
        if (option == "--pattern") {
            pattern = simulator::ridgePatternByName(value);
            if (!pattern)
                return refuseArguments("there is no pattern '" + value + "'");
        } else if (option == "--seed") {
            if (!simulator::parseInteger(value, seed) || seed < 0)
                return refuseArguments("the seed '" + value + "' is not 0 or a positive integer");
        } else {
            output = value;
        }
    }
    if (!pattern)
        return refuseArguments("--pattern is missing");
    const std::string picture =
        simulator::formatGreyMap(simulator::syntheticFingerprint(*pattern, static_cast<std::uint64_t>(seed)));
    std::string error;
    if (!simulator::writeFile(picture, output, error)) {
        std::fprintf(stderr, "scribera-sim-fingerprint: %s\n", error.c_str());
        return 1;
    }
    return 0;
}
