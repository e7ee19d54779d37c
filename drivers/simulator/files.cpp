#include "files.h"

#include "texts.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace simulator {
namespace {

constexpr std::size_t LargestFile = std::size_t{64} << 20;

std::string systemReason(int code)
{
    return std::generic_category().message(code);
}

} // namespace

bool readFile(const std::string& path, std::string& content, std::string& error)
{
    const auto refuse = [&](const std::string& reason) {
        error = reason;
        return false;
    };
    // Not blocking: a named pipe without a writer must not hang the host.
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file < 0)
        return refuse(filled(trText("Simulator", "%1: cannot be opened: %2"), {path, systemReason(errno)}));
    const auto refuseOpen = [&](const std::string& reason) {
        close(file);
        return refuse(reason);
    };
    struct stat state = {};
    if (fstat(file, &state) != 0)
        return refuseOpen(
            filled(trText("Simulator", "%1: cannot be examined: %2"), {path, systemReason(errno)}));
    if (!S_ISREG(state.st_mode))
        return refuseOpen(filled(trText("Simulator", "%1: is not a regular file"), {path}));
    if (state.st_size > static_cast<off_t>(LargestFile))
        return refuseOpen(filled(trText("Simulator", "%1: is larger than 64 MiB"), {path}));
    content.clear();
    content.reserve(static_cast<std::size_t>(state.st_size));
    std::array<char, 65536> block;
    for (;;) {
        const ssize_t count = read(file, block.data(), block.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return refuseOpen(
                filled(trText("Simulator", "%1: cannot be read: %2"), {path, systemReason(errno)}));
        if (count == 0)
            break;
        content.append(block.data(), static_cast<std::size_t>(count));
        if (content.size() > LargestFile)
            return refuseOpen(filled(trText("Simulator", "%1: is larger than 64 MiB"), {path}));
    }
    close(file);
    return true;
}

bool writeFile(const std::string& text, const std::string& path, std::string& error)
{
    const bool toStandardOutput = path == "-";
    std::FILE* file = toStandardOutput ? stdout : std::fopen(path.c_str(), "wbe");
    const auto refuse = [&](int code) {
        const std::string name = toStandardOutput ? trText("Simulator", "standard output") : path;
        error = filled(trText("Simulator", "%1: cannot be written: %2"), {name, systemReason(code)});
        return false;
    };
    if (file == nullptr)
        return refuse(errno);
    errno = 0;
    bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
    int code = errno;
    if (!toStandardOutput && std::fclose(file) != 0 && written) {
        code = errno;
        written = false;
    }
    if (written)
        return true;
    struct stat state = {};
    if (!toStandardOutput && lstat(path.c_str(), &state) == 0 && S_ISREG(state.st_mode))
        unlink(path.c_str());
    return refuse(code);
}

} // namespace simulator
