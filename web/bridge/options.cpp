#include "options.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <vector>

namespace bridge {
namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

constexpr char help[] =
    R"(Usage: scribera-bridge [options]
Lets pages in a browser take signatures from the pads of this machine. Listens on loopback addresses alone, prints
its address on a line of standard output, and serves until it is told to end.

  --port N               port; 0 takes any that is free. Default 17283.
  --allow-origin ORIGIN  pages of this origin may use the pads: https://contracts.example. May be repeated.
  --driver DRIVER        the pads' driver: 'pen' for pens and touch screens of this machine, which is the default,
                         'simulated', or a file.
  --certificate FILE     serve by TLS with this chain of certificates, in PEM.
  --key FILE             its private key, where that is not in the same file.
  --allow-no-origin      let clients in that are no browsers.
  --no-loopback-pages    refuse pages of loopback addresses too, unless they are named.
  --open-time SECONDS    close a pad that was open for so long, 1 to 86400. Default 3600.
  --resume-time SECONDS  keep a pad open for so long without a page, 1 to 3600. Default 30.
  --config FILE          read options from a file: one a line, without the dashes, 'allow-origin = ORIGIN'; '#'
                         begins a comment. The command line counts more.
  -h, --help             this text.
  --version              the version.

/health tells that the service is there, /scribera-pad.js is the client for pages, /example a page that signs.
Exit code: 0 ended by SIGTERM or SIGINT, 1 failure, 2 wrong usage.
)";

// One option as it was written, on the command line or in the file.
struct Given
{
    std::string name;
    std::string value;
};

struct Kind
{
    std::string_view name;
    bool hasValue;
    bool isInFile;
};
constexpr Kind kinds[] = {
    {"port", true, true},
    {"allow-origin", true, true},
    {"driver", true, true},
    {"certificate", true, true},
    {"key", true, true},
    {"allow-no-origin", false, true},
    {"no-loopback-pages", false, true},
    {"open-time", true, true},
    {"resume-time", true, true},
    {"config", true, false},
};

const Kind* kindNamed(std::string_view name)
{
    const auto* const kind =
        std::find_if(std::begin(kinds), std::end(kinds), [&](const Kind& row) { return row.name == name; });
    return kind == std::end(kinds) ? nullptr : kind;
}

std::string absolutePath(const std::string& path)
{
    return std::filesystem::absolute(path).lexically_normal().string();
}

// Throws the reason.
template <typename Number>
Number numberOf(const Given& given, Number smallest, Number largest)
{
    Number number = 0;
    const char* const end = given.value.data() + given.value.size();
    const auto [last, error] = std::from_chars(given.value.data(), end, number);
    if (error != std::errc() || last != end || number < smallest || number > largest)
        throw given.name + " has to be a number from " + std::to_string(smallest) + " to " +
            std::to_string(largest) + ", not " + given.value;
    return number;
}

void apply(Options& options, const Given& given)
{
    const std::string& value = given.value;
    if (given.name == "port") {
        options.port = numberOf<unsigned short>(given, 0, 65535);
    } else if (given.name == "open-time") {
        options.openSeconds = numberOf(given, 1, 86400);
    } else if (given.name == "resume-time") {
        options.resumeSeconds = numberOf(given, 1, 3600);
    } else if (given.name == "allow-origin") {
        if (!options.origins.allow(value))
            throw std::string(value + " is no origin; one is https://contracts.example");
    } else if (given.name == "driver") {
        options.driver = value == "pen" || value == "simulated" ? value : absolutePath(value);
    } else if (given.name == "certificate") {
        options.certificate = absolutePath(value);
    } else if (given.name == "key") {
        options.key = absolutePath(value);
    } else if (given.name == "allow-no-origin") {
        options.allowsNoOrigin = true;
    } else if (given.name == "no-loopback-pages") {
        options.origins.allowLoopback(false);
    }
}

std::string trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return std::string(text.substr(first, text.find_last_not_of(blanks) - first + 1));
}

void readFile(Options& options, const std::string& path)
{
    std::ifstream file(path);
    std::string line;
    int number = 0;
    const auto fault = [&](const std::string& reason) {
        return OptionFault{path + ':' + std::to_string(number) + ": " + reason, failed};
    };
    while (std::getline(file, line)) {
        ++number;
        const std::string text = trimmed(std::string_view(line).substr(0, line.find('#')));
        if (text.empty())
            continue;
        const std::size_t equals = text.find('=');
        const Given given{trimmed(std::string_view(text).substr(0, equals)),
                          equals == std::string::npos ? ""
                                                      : trimmed(std::string_view(text).substr(equals + 1))};
        const Kind* const kind = kindNamed(given.name);
        if (!kind || !kind->isInFile)
            throw fault("there is no option " + given.name);
        if (kind->hasValue != (equals != std::string::npos) || kind->hasValue == given.value.empty())
            throw fault(given.name + (kind->hasValue ? " needs a value" : " takes no value"));
        try {
            apply(options, given);
        } catch (const std::string& reason) {
            throw fault(reason);
        }
    }
    if (!file.eof())
        throw OptionFault{path + ": cannot be read", failed};
}

std::vector<Given> readCommandLine(int argc, char** argv)
{
    std::vector<Given> all;
    for (int index = 1; index < argc; ++index) {
        const std::string_view argument = argv[index];
        if (argument == "--help" || argument == "-h")
            throw Printed{help};
        if (argument == "--version")
            throw Printed{"scribera-bridge " SCRIBERA_VERSION "\n"};
        const std::size_t equals = argument.find('=');
        const Kind* const kind =
            argument.starts_with("--") ? kindNamed(argument.substr(2, equals - 2)) : nullptr;
        if (!kind)
            throw OptionFault{"unexpected: " + std::string(argument), wrongUsage};
        Given given{std::string(kind->name), {}};
        if (kind->hasValue && equals == std::string_view::npos)
            given.value = ++index < argc ? argv[index] : "";
        else if (equals != std::string_view::npos)
            given.value = argument.substr(equals + 1);
        if (kind->hasValue == given.value.empty())
            throw OptionFault{"--" + given.name + (kind->hasValue ? " needs a value" : " takes no value"),
                              wrongUsage};
        all.push_back(std::move(given));
    }
    return all;
}

} // namespace

Options readOptions(int argc, char** argv)
{
    Options options;
    const std::vector<Given> line = readCommandLine(argc, argv);
    for (const Given& given : line)
        if (given.name == "config")
            readFile(options, given.value);
    try {
        for (const Given& given : line)
            apply(options, given);
    } catch (const std::string& reason) {
        throw OptionFault{reason, wrongUsage};
    }
    if (options.certificate.empty() && !options.key.empty())
        throw OptionFault{"--key needs --certificate", wrongUsage};
    if (options.key.empty())
        options.key = options.certificate;
    return options;
}

} // namespace bridge
