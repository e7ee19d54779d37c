// scribera-sim-fingerprint: writes a synthetic fingerprint as a PGM picture.
#include "catalogues.h"
#include "files.h"
#include "fingerprint.h"
#include "recording.h"
#include "texts.h"
#include "words.h"

#include <cstdio>
#include <string>

namespace {

std::string usage()
{
    return trText("Simulator",
                  "usage: scribera-sim-fingerprint --pattern NAME [--seed N] [-o FILE]\n"
                  "Writes a synthetic fingerprint as a grey PGM picture of 208x288 pixels.\n\n"
                  "  --pattern NAME  ridges: loop, whorl or arch\n"
                  "  --seed N        0 or a positive integer, default 1; the same seed gives the same bytes\n"
                  "  -o FILE         file to write, default standard output\n"
                  "  --help          this text\n"
                  "  --version       name and version\n\n"
                  "Exit code: 0 done, 1 the file cannot be written, 2 wrong arguments.\n");
}

int refuseArguments(const std::string& reason)
{
    std::fprintf(stderr, "scribera-sim-fingerprint: %s\n%s\n", reason.c_str(),
                 filled(trText("Simulator", "Try '%1 --help'."), {"scribera-sim-fingerprint"}).c_str());
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    loadCatalogues();
    std::optional<simulator::RidgePattern> pattern;
    std::int64_t seed = 1;
    std::string output = "-";
    for (int index = 1; index < argc; ++index) {
        const std::string option = argv[index];
        if (option == "--help" || option == "-h") {
            std::fputs(usage().c_str(), stdout);
            return 0;
        }
        if (option == "--version") {
            std::puts("scribera-sim-fingerprint " SCRIBERA_VERSION);
            return 0;
        }
        if (option != "--pattern" && option != "--seed" && option != "-o")
            return refuseArguments(filled(trText("Simulator", "unknown argument '%1'"), {option}));
        if (++index == argc)
            return refuseArguments(filled(trText("Simulator", "%1 needs a value"), {option}));
        const std::string value = argv[index];
        if (option == "--pattern") {
            pattern = simulator::ridgePatternByName(value);
            if (!pattern)
                return refuseArguments(filled(trText("Simulator", "there is no pattern '%1'"), {value}));
        } else if (option == "--seed") {
            if (!simulator::parseInteger(value, seed) || seed < 0)
                return refuseArguments(
                    filled(trText("Simulator", "the seed '%1' is not 0 or a positive integer"), {value}));
        } else {
            output = value;
        }
    }
    if (!pattern)
        return refuseArguments(filled(trText("Simulator", "%1 is missing"), {"--pattern"}));
    const std::string picture =
        simulator::formatGreyMap(simulator::syntheticFingerprint(*pattern, static_cast<std::uint64_t>(seed)));
    std::string error;
    if (!simulator::writeFile(picture, output, error)) {
        std::fprintf(stderr, "scribera-sim-fingerprint: %s\n", error.c_str());
        return 1;
    }
    return 0;
}
