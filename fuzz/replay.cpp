// Feeds files to a fuzz target without the fuzzing engine: the committed corpus as a test, or one file that
// an engine has left behind.

#include "fuzzer.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::vector<fs::path> filesOf(int argc, char** argv)
{
    std::vector<fs::path> files;
    for (int index = 1; index < argc; ++index) {
        if (!fs::is_directory(argv[index])) {
            files.emplace_back(argv[index]);
            continue;
        }
        for (const fs::directory_entry& entry : fs::directory_iterator(argv[index]))
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<fs::path> files = filesOf(argc, argv);
    if (files.empty()) {
        std::fprintf(stderr, "usage: %s FILE-OR-DIRECTORY...: at least one file\n", argv[0]);
        return 2;
    }
    LLVMFuzzerInitialize(&argc, &argv);
    for (const fs::path& file : files) {
        std::printf("%s\n", file.c_str()); // before it is tried: the last line names the file of a crash
        std::fflush(stdout);
        std::ifstream in(file, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        if (!in.is_open() || in.bad()) {
            std::fprintf(stderr, "%s cannot be read\n", file.c_str());
            return 1;
        }
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu files\n", files.size());
    return 0;
}
