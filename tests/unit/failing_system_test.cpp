// Calls of the system that fail, one at a time and for good, while a file is written: it is there whole, as
// it was before, empty or not at all, nothing else stays in its folder, and the next time it works.
#include "export/wholefile.h"

#include <QString>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <new>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

// Of the test's only thread.
struct Failures
{
    bool counts = false;            // calls, while the file is written
    int calls = 0;                  // so far
    int failsAt = 0;                // the call that fails; 0 none
    std::string failsAlways;        // the name of calls that the file system does not know; empty none
    int error = EIO;                // of the call that fails
    int unknown = EOPNOTSUPP;       // of the others
    std::vector<std::string> names; // of the calls
};
thread_local Failures failures;

Failures at(int call, int error = EIO)
{
    Failures planned;
    planned.failsAt = call;
    planned.error = error;
    return planned;
}

Failures always(const char* name, int call = 0)
{
    Failures planned = at(call);
    planned.failsAlways = name;
    return planned;
}

// Runs it with these failures, whichever way it ends.
template <class Write>
bool withFailures(const Failures& planned, Write write)
{
    struct End
    {
        ~End() { failures.counts = false; }
    } end;
    failures = planned;
    failures.counts = true;
    return write();
}

bool fails(const char* name)
{
    if (!failures.counts)
        return false;
    failures.names.emplace_back(name);
    const bool isUnknown = failures.failsAlways == name;
    if (++failures.calls != failures.failsAt && !isUnknown)
        return false;
    errno = isUnknown ? failures.unknown : failures.error;
    return true;
}

template <class Function>
Function next(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

// Takes the place of the C library's functions in the whole program. A function that is called is looked up
// at its first call.
#define STANDS_IN(result, name, parameters, arguments)                                                       \
    extern "C" result name parameters                                                                        \
    {                                                                                                        \
        static const auto real = next<result(*) parameters>(#name);                                          \
        return fails(#name) ? static_cast<result>(-1) : real arguments;                                      \
    }

STANDS_IN(ssize_t, flistxattr, (int file, char* list, size_t size), (file, list, size))
STANDS_IN(ssize_t, fgetxattr, (int file, const char* name, void* value, size_t size),
          (file, name, value, size))
STANDS_IN(int, fsetxattr, (int file, const char* name, const void* value, size_t size, int flags),
          (file, name, value, size, flags))
STANDS_IN(int, fremovexattr, (int file, const char* name), (file, name))
STANDS_IN(int, fchmod, (int file, mode_t mode), (file, mode))
STANDS_IN(int, fstat, (int file, struct stat* status), (file, status))
STANDS_IN(int, fstatat, (int folder, const char* path, struct stat* status, int flags),
          (folder, path, status, flags))
STANDS_IN(int, fstatfs, (int file, struct statfs* status), (file, status))
STANDS_IN(int, statx, (int folder, const char* path, int flags, unsigned mask, struct statx* status),
          (folder, path, flags, mask, status))
STANDS_IN(int, linkat, (int from, const char* older, int to, const char* newer, int flags),
          (from, older, to, newer, flags))
STANDS_IN(int, renameat, (int from, const char* older, int to, const char* newer), (from, older, to, newer))
STANDS_IN(int, fallocate, (int file, int mode, off_t offset, off_t length), (file, mode, offset, length))
STANDS_IN(int, ftruncate, (int file, off_t length), (file, length))
STANDS_IN(off_t, lseek, (int file, off_t offset, int from), (file, offset, from))
STANDS_IN(ssize_t, write, (int file, const void* bytes, size_t size), (file, bytes, size))

// What was open is not afterwards, either.
extern "C" int close(int file)
{
    static const auto real = next<int (*)(int)>("close");
    const bool isToFail = fails("close");
    const int error = errno;
    const int result = real(file);
    if (!isToFail)
        return result;
    errno = error;
    return -1;
}

extern "C" int open(const char* path, int flags, ...)
{
    static const auto real = next<int (*)(const char*, int, ...)>("open");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return fails("open") ? -1 : real(path, flags, mode);
}

extern "C" int openat(int folder, const char* path, int flags, ...)
{
    static const auto real = next<int (*)(int, const char*, int, ...)>("openat");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return fails("openat") ? -1 : real(folder, path, flags, mode);
}

namespace scribera::test {
namespace {

namespace fs = std::filesystem;

const std::string older(3000, 'o');
const std::string newer(200'000, 'n');

std::optional<std::string> contentOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::set<std::string> namesIn(const fs::path& folder)
{
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        names.insert(entry.path().filename());
    return names;
}

// In two pieces, so that a file may have got one of them.
bool handOverHalves(const FnTakeBytes& take)
{
    const std::size_t half = newer.size() / 2;
    return take(newer.data(), half) && take(newer.data() + half, newer.size() - half);
}

// A file, and what it is like before it is written.
struct Scene
{
    std::string name;
    std::function<void(const fs::path& file)> make;
};

void PrintTo(const Scene& scene, std::ostream* out)
{
    *out << scene.name;
}

void makeOlder(const fs::path& file)
{
    std::ofstream(file) << older;
}

class FailingSystem : public testing::TestWithParam<Scene>
{
protected:
    void SetUp() override
    {
        fs::remove_all(m_folder);
        fs::create_directory(m_folder);
    }

    // Writes with these failures. How many calls it took.
    int write(const Failures& planned, std::optional<bool>& written, const FnHandOver& handOver)
    {
        fs::remove_all(m_folder);
        fs::create_directory(m_folder);
        GetParam().make(m_file);
        written = withFailures(
            planned, [&] { return WriteWholeFile(QString::fromStdString(m_file.string()), handOver); });
        return failures.calls;
    }
    int write(const Failures& planned, std::optional<bool>& written)
    {
        return write(planned, written, handOverHalves);
    }

    void expectTidy(bool written, const std::set<std::string>& names)
    {
        const std::optional<std::string> content = contentOf(m_file);
        if (written)
            EXPECT_EQ(content, newer);
        else
            EXPECT_TRUE(!content || content->empty() || content == older || content == newer)
                << content->size() << " bytes that are neither";
        for (const std::string& name : namesIn(m_folder))
            EXPECT_TRUE(names.contains(name)) << name << " stays behind";
        ASSERT_TRUE(WriteWholeFile(QString::fromStdString(m_file.string()), handOverHalves));
        EXPECT_EQ(contentOf(m_file), newer);
        EXPECT_EQ(namesIn(m_folder), names);
    }

    const fs::path m_folder = fs::current_path() / "folder";
    const fs::path m_file = m_folder / "picture.png";
};

TEST_P(FailingSystem, LeavesNoPartAndNothingElseAtAnyCall)
{
    std::optional<bool> written;
    const int calls = write({}, written);
    ASSERT_EQ(written, true);
    ASSERT_GT(calls, 3);
    const std::set<std::string> names = namesIn(m_folder);
    for (const int error : {EIO, EINTR}) {
        for (int call = 1; call <= calls; ++call) {
            SCOPED_TRACE(testing::Message() << std::strerror(error) << " at call " << call);
            write(at(call, error), written);
            SCOPED_TRACE(failures.names[static_cast<std::size_t>(call) - 1]);
            expectTidy(*written, names);
        }
    }
}

TEST_P(FailingSystem, DoesWithoutWhatAFileSystemDoesNotKnow)
{
    std::optional<bool> written;
    write({}, written);
    const std::set<std::string> names = namesIn(m_folder);
    for (const char* const unknown : {"openat", "flistxattr", "fgetxattr", "fsetxattr", "statx", "linkat",
                                      "fallocate", "fchmod", "renameat"}) {
        for (const int error : {EOPNOTSUPP, ENOSYS}) {
            SCOPED_TRACE(testing::Message() << unknown << ": " << std::strerror(error));
            Failures planned = always(unknown);
            planned.unknown = error;
            write(planned, written);
            EXPECT_EQ(written, true);
            expectTidy(*written, names);
        }
    }
}

TEST_P(FailingSystem, LeavesNoPartAtAnyCallWhereTheFileSystemKnowsLess)
{
    for (const char* const unknown : {"openat", "fallocate"}) {
        SCOPED_TRACE(unknown);
        std::optional<bool> written;
        const int calls = write(always(unknown), written);
        const std::set<std::string> names = namesIn(m_folder);
        for (int call = 1; call <= calls; ++call) {
            SCOPED_TRACE(call);
            write(always(unknown, call), written);
            SCOPED_TRACE(failures.names[static_cast<std::size_t>(call) - 1]);
            expectTidy(*written, names);
        }
    }
}

// What is written in place is asked for twice, the first time for its size.
TEST_P(FailingSystem, LeavesNoPartWhenTheBytesEndInAnException)
{
    std::optional<bool> written;
    write({}, written);
    const std::set<std::string> names = namesIn(m_folder);
    for (const char* const unknown : {"", "openat"}) { // then in place, and not without a name
        for (const int throwsAt : {1, 2}) {
            SCOPED_TRACE(testing::Message() << "without '" << unknown << "', time " << throwsAt);
            int times = 0;
            const auto handOver = [&](const FnTakeBytes& take) {
                const bool taken = take(newer.data(), newer.size() / 2);
                if (++times == throwsAt)
                    throw std::bad_alloc();
                return taken && take(newer.data() + newer.size() / 2, newer.size() - newer.size() / 2);
            };
            written = false;
            try {
                write(always(unknown), written, handOver);
            } catch (const std::bad_alloc&) {
            }
            EXPECT_EQ(*written, times < throwsAt);
            expectTidy(*written, names);
        }
    }
}

TEST_P(FailingSystem, LeavesNoPartWhenTheBytesCannotBeMade)
{
    std::optional<bool> written;
    write({}, written);
    const std::set<std::string> names = namesIn(m_folder);
    for (const char* const unknown : {"", "openat"}) {
        for (const int failsAt : {1, 2}) {
            SCOPED_TRACE(testing::Message() << "without '" << unknown << "', time " << failsAt);
            int times = 0;
            write(always(unknown), written, [&](const FnTakeBytes& take) {
                return take(newer.data(), newer.size() / 2) && ++times < failsAt &&
                       take(newer.data() + newer.size() / 2, newer.size() - newer.size() / 2);
            });
            EXPECT_EQ(*written, times < failsAt);
            expectTidy(*written, names);
        }
    }
}

TEST_P(FailingSystem, EmptiesAFileForNoBytes)
{
    GetParam().make(m_file);
    EXPECT_TRUE(WriteWholeFile(QString::fromStdString(m_file.string()), QByteArray()));
    EXPECT_EQ(contentOf(m_file), "");
}

// Under the number that the process has it open by, as pipes to a host's other half are.
TEST(FailingSystemHere, WritesWhatIsOpenUnderANumber)
{
    makeOlder("open.png");
    const CFileDescriptor file(::open("open.png", O_RDONLY | O_CLOEXEC));
    const std::string name = "/proc/self/fd/" + std::to_string(file.Number());
    EXPECT_TRUE(WriteWholeFile(QString::fromStdString(name), handOverHalves));
    EXPECT_EQ(contentOf("open.png"), newer);
    EXPECT_EQ(contentOf(name), newer) << "it is another file";
}

TEST(FailingSystemHere, TellsWhatAPipeRefuses)
{
    fs::remove("pipe");
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    const CFileDescriptor reader(
        ::open("pipe", O_RDONLY | O_NONBLOCK | O_CLOEXEC)); // it has room for all of it
    ASSERT_TRUE(reader.IsOpen());
    const auto write = [](const Failures& planned) {
        return withFailures(planned, [] {
            return WriteWholeFile(QStringLiteral("pipe"),
                                  [](const FnTakeBytes& take) { return take("some", 4) && take("more", 4); });
        });
    };
    ASSERT_TRUE(write({}));
    const int calls = failures.calls;
    ASSERT_GT(calls, 3);
    for (int call = 1; call <= calls; ++call)
        EXPECT_FALSE(write(at(call))) << failures.names[static_cast<std::size_t>(call) - 1];
    EXPECT_TRUE(fs::is_fifo("pipe"));
}

// Without a folder in their names.
TEST(FailingSystemHere, LeavesNoPartOfAFileInTheCurrentFolder)
{
    for (const bool isThere : {false, true}) {
        fs::remove("here.png");
        if (isThere)
            makeOlder("here.png");
        EXPECT_TRUE(WriteWholeFile(QStringLiteral("here.png"), handOverHalves));
        EXPECT_EQ(contentOf("here.png"), newer);
    }
    EXPECT_FALSE(WriteWholeFile(QString(), handOverHalves));
}

TEST(FailingSystemHere, LeavesNoPartOfAFileThatIsOpen)
{
    const auto overwrite = [](const Failures& planned, bool& written) {
        makeOlder("open.svg");
        CFileDescriptor file(::open("open.svg", O_WRONLY | O_CLOEXEC));
        written =
            withFailures(planned, [&] { return OverwriteFile(file, QByteArray::fromStdString(newer)); });
        return failures.calls;
    };
    bool written = false;
    const int calls = overwrite({}, written);
    ASSERT_TRUE(written);
    ASSERT_GT(calls, 2);
    EXPECT_EQ(contentOf("open.svg"), newer);
    for (const char* const unknown : {"", "fallocate"}) {
        for (int call = 1; call <= calls + 2; ++call) {
            SCOPED_TRACE(testing::Message() << "without '" << unknown << "', call " << call);
            overwrite(always(unknown, call), written);
            const std::optional<std::string> content = contentOf("open.svg");
            // Whether all is there shows only when it is closed.
            EXPECT_TRUE(content == newer || (!written && (content == older || content->empty())));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    , FailingSystem,
    // Where the file system has no attributes, the scenes with them are as the plain one.
    testing::Values(Scene{"New", [](const fs::path&) {}}, Scene{"Older", makeOlder},
                    Scene{"WithAttributes",
                          [](const fs::path& file) {
                              makeOlder(file);
                              static_cast<void>(setxattr(file.c_str(), "user.note", "kept", 4, 0));
                          }},
                    Scene{"WhereNewFilesGetAnAccessList",
                          [](const fs::path& file) {
                              makeOlder(file);
                              // Version 2; all rights for owner, group and others, and a mask.
                              constexpr unsigned char kList[] = {
                                  2,    0,   0,   0,   0x01, 0,   7,   0,   255,  255, 255, 255,
                                  0x04, 0,   7,   0,   255,  255, 255, 255, 0x10, 0,   7,   0,
                                  255,  255, 255, 255, 0x20, 0,   7,   0,   255,  255, 255, 255};
                              static_cast<void>(setxattr(file.parent_path().c_str(),
                                                         "system.posix_acl_default", kList, sizeof kList, 0));
                          }},
                    Scene{"WithTwoNames",
                          [](const fs::path& file) {
                              makeOlder(file);
                              fs::create_hard_link(file, file.parent_path() / "second.png");
                          }},
                    Scene{"BehindALink",
                          [](const fs::path& file) {
                              makeOlder(file.parent_path() / "aim.png");
                              fs::create_symlink("aim.png", file);
                          }},
                    Scene{"BehindAnAbsoluteLink",
                          [](const fs::path& file) {
                              makeOlder(file.parent_path() / "aim.png");
                              fs::create_symlink(file.parent_path() / "aim.png", file);
                          }},
                    Scene{"WithSpecialRights",
                          [](const fs::path& file) {
                              makeOlder(file);
                              fs::permissions(file, fs::perms::set_uid, fs::perm_options::add);
                          }},
                    Scene{"BesideAFolderOfTheNewName",
                          [](const fs::path& file) {
                              makeOlder(file);
                              fs::create_directory(file.parent_path() / ".picture.png.scribera-new");
                          }},
                    Scene{"BesideTwoNamesOfALeftover",
                          [](const fs::path& file) {
                              makeOlder(file);
                              makeOlder(file.parent_path() / ".picture.png.scribera-new");
                              fs::create_hard_link(file.parent_path() / ".picture.png.scribera-new",
                                                   file.parent_path() / "second.png");
                          }},
                    Scene{"BehindALinkThatLeadsNowhere",
                          [](const fs::path& file) { fs::create_symlink("aim.png", file); }}),
    [](const testing::TestParamInfo<Scene>& info) { return info.param.name; });

} // namespace
} // namespace scribera::test
