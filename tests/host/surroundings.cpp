#include "surroundings.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <unistd.h>

namespace scribera::test {

namespace fs = std::filesystem;

const char* const mainLogFile = "/tmp/scriberasdk.log";
const char* const inThreadLogFile = "/tmp/scriberasdk_inthread.log";
const char* const svgScratchFile = "/tmp/Scrsign.svg";

namespace {

bool writeText(const char* path, const std::string& text)
{
    std::ofstream out(path);
    out << text;
    out.flush();
    return out.good();
}

bool enterMountNamespace()
{
    if (unshare(CLONE_NEWNS) == 0)
        return true;
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && writeText("/proc/self/setgroups", "deny") &&
           writeText("/proc/self/uid_map", user + " " + user + " 1") &&
           writeText("/proc/self/gid_map", group + " " + group + " 1");
}

bool isBelow(const fs::path& path, const fs::path& directory)
{
    const fs::path relative = path.lexically_relative(directory);
    return !relative.empty() && *relative.begin() != ".." && relative != ".";
}

struct KeptDirectory
{
    fs::path path;
    int descriptor;
};

bool showAgain(const std::vector<KeptDirectory>& kept)
{
    for (const KeptDirectory& directory : kept) {
        std::error_code failure;
        fs::create_directories(directory.path, failure);
        const std::string source = "/proc/self/fd/" + std::to_string(directory.descriptor);
        if (mount(source.c_str(), directory.path.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0)
            return false;
    }
    return true;
}

constexpr char privateTmp[] = "scribera-tests"; // as its source is called
bool tmpIsPrivate = false;                      // written before any thread exists

} // namespace

bool makeTmpPrivate(const std::vector<std::string>& keep)
{
    if (!enterMountNamespace() || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return false;

    std::vector<KeptDirectory> kept;
    for (const std::string& path : keep) {
        const fs::path whole = fs::weakly_canonical(path);
        if (!isBelow(whole, "/tmp"))
            continue;
        const int descriptor = open(whole.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (descriptor < 0)
            return false;
        kept.push_back({whole, descriptor});
    }
    bool done = mount(privateTmp, "/tmp", "tmpfs", MS_NOSUID | MS_NODEV, "mode=1777") == 0;
    if (done && !showAgain(kept)) {
        umount2("/tmp", MNT_DETACH);
        done = false;
    }
    for (const KeptDirectory& directory : kept)
        close(directory.descriptor);
    tmpIsPrivate = done;
    return done;
}

bool resizePrivateTmp(const std::string& size)
{
    return tmpIsPrivate &&
           mount(privateTmp, "/tmp", "tmpfs", MS_REMOUNT | MS_NOSUID | MS_NODEV, size.c_str()) == 0;
}

void lockSharedTmp()
{
    const char* const path = "/tmp/scribera-tests.lock"; // perhaps another user's, so only read
    int lock = open(path, O_RDONLY | O_CLOEXEC);
    if (lock < 0)
        lock = open(path, O_RDONLY | O_CREAT | O_CLOEXEC, 0644);
    if (lock < 0 || flock(lock, LOCK_EX) != 0) {
        std::perror(path);
        std::exit(1);
    }
    for (const char* stale : {mainLogFile, inThreadLogFile, svgScratchFile})
        fs::remove_all(stale);
}

} // namespace scribera::test
