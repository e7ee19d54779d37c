// What saving a picture over an older file does to the file, its names, its folder and its looks.

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "pen.h"

namespace scribera::test {
namespace {

namespace fs = std::filesystem;

struct stat statusOf(const fs::path& path)
{
    struct stat status
    {
    };
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

std::vector<std::string> namesIn(const fs::path& folder)
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

// A file whose number is not given to another one meanwhile.
class KeptFile
{
public:
    explicit KeptFile(const fs::path& path) : m_file(open(path.c_str(), O_RDONLY | O_CLOEXEC))
    {
        EXPECT_EQ(fstat(m_file, &m_status), 0) << path;
    }
    ~KeptFile() { close(m_file); }
    KeptFile(const KeptFile&) = delete;
    KeptFile& operator=(const KeptFile&) = delete;

    const struct stat& status() const { return m_status; }
    bool is(const fs::path& path) const { return statusOf(path).st_ino == m_status.st_ino; }
    std::string content() const
    {
        std::string content(4096, '\0');
        content.resize(
            static_cast<std::size_t>(std::max<ssize_t>(pread(m_file, content.data(), 4096, 0), 0)));
        return content;
    }

private:
    int m_file;
    struct stat m_status
    {
    };
};

void makeFile(const fs::path& path, const std::string& content)
{
    std::ofstream(path) << content;
}

// As a user who is not root, for files and folders. Who has a /tmp of one's own without being root may do
// there what root may; this thread does without.
class OrdinaryUser
{
public:
    OrdinaryUser()
    {
        if (m_isRoot) {
            EXPECT_TRUE(setegid(nobody) == 0 && seteuid(nobody) == 0);
        } else {
            EXPECT_EQ(syscall(SYS_capget, &m_header, m_before.data()), 0);
            Capabilities fewer = m_before;
            fewer[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH | 1U << CAP_FOWNER);
            EXPECT_EQ(syscall(SYS_capset, &m_header, fewer.data()), 0);
        }
    }
    ~OrdinaryUser()
    {
        if (m_isRoot) {
            EXPECT_TRUE(seteuid(0) == 0 && setegid(0) == 0);
        } else {
            EXPECT_EQ(syscall(SYS_capset, &m_header, m_before.data()), 0);
        }
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

    static constexpr uid_t nobody = 65534;

private:
    using Capabilities = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

    const bool m_isRoot = geteuid() == 0;
    __user_cap_header_struct m_header = {_LINUX_CAPABILITY_VERSION_3, 0};
    Capabilities m_before{};
};

class WholeFile : public SignedTest
{
protected:
    void SetUp() override
    {
        SignedTest::SetUp();
        m_text = takeImageEx(pad(), ImagePng, false).text;
        fs::create_directory(folder());
        fs::permissions(folder(), fs::perms::all); // also for the ordinary user
    }
    void TearDown() override
    {
        fs::remove_all(folder());
        SignedTest::TearDown();
    }

    // Both operations that write a raster, one after the other.
    void saveBothWays(const fs::path& path, const std::function<void()>& check)
    {
        ASSERT_EQ(pad().save(ImageBmp, path.string()), 0);
        expectPicture(path);
        check();
        ASSERT_EQ(decode(pad(), ImagePng, m_text, path.string()), 0);
        expectPicture(path);
        check();
    }
    void expectRefused(const fs::path& path)
    {
        EXPECT_EQ(pad().save(ImageBmp, path.string()), -8) << path;
        EXPECT_EQ(decode(pad(), ImagePng, m_text, path.string()), -8) << path;
    }
    // Tries to replace a file, to write one in its place and to make one. None of them changes anything.
    void onAFullDisk(const std::string& suffix, const std::function<void(const fs::path&)>& write)
    {
        const fs::path replaced = folder() / ("replaced" + suffix);
        const fs::path inPlace = folder() / ("in-place" + suffix);
        makeFile(replaced, "older");
        makeFile(inPlace, "older");
        fs::create_hard_link(inPlace, folder() / ("second" + suffix));
        const std::vector<std::string> names = namesIn(folder());
        const FullTmp full;
        if (!full.isFull())
            GTEST_SKIP() << "needs a /tmp of its own";
        for (const fs::path& path : {replaced, inPlace, folder() / ("new" + suffix)})
            write(path);
        EXPECT_EQ(fileContent(replaced), "older");
        EXPECT_EQ(fileContent(inPlace), "older");
        EXPECT_EQ(namesIn(folder()), names);
    }
    void expectPicture(const fs::path& path) { EXPECT_TRUE(sameColors(loaded(path), canvas())) << path; }
    // Where every user comes to, and the disk can be full.
    static fs::path folder() { return "/tmp/whole-files"; }

    std::string m_text; // the picture
};

TEST_P(WholeFile, OlderFileIsReplacedAndLooksAsBefore)
{
    makeFile("older.png", "older");
    fs::permissions("older.png", fs::perms(0640));
    ASSERT_EQ(setxattr("older.png", "user.origin", "counter 3", 9, 0), 0) << std::strerror(errno);
    // Read and write for the owner, read for user 7, nothing for the group, a mask of read.
    std::array<unsigned char, 44> list = {2, 0, 0,   0,   1,   0,   6,  0, 255, 255, 255, 255, 2,   0,  4,
                                          0, 7, 0,   0,   0,   4,   0,  0, 0,   255, 255, 255, 255, 16, 0,
                                          4, 0, 255, 255, 255, 255, 32, 0, 0,   0,   255, 255, 255, 255};
    if (const uid_t user = geteuid(); user != 0)
        std::memcpy(&list[16], &user, sizeof user); // the only one that there is for sure
    ASSERT_EQ(setxattr("older.png", "system.posix_acl_access", list.data(), list.size(), 0), 0)
        << std::strerror(errno);
    const KeptFile older("older.png");
    const std::vector<std::string> names = namesIn(".");
    saveBothWays("older.png", [&] {
        const struct stat after = statusOf("older.png");
        EXPECT_FALSE(older.is("older.png")) << "a new file under the old name";
        EXPECT_EQ(after.st_mode, older.status().st_mode);
        EXPECT_EQ(after.st_uid, older.status().st_uid);
        EXPECT_EQ(after.st_gid, older.status().st_gid);
        std::array<char, 64> value{};
        EXPECT_EQ(getxattr("older.png", "user.origin", value.data(), value.size()), 9);
        EXPECT_STREQ(value.data(), "counter 3");
        std::array<unsigned char, 64> entries{};
        EXPECT_EQ(getxattr("older.png", "system.posix_acl_access", entries.data(), entries.size()), 44);
        EXPECT_TRUE(std::equal(list.begin(), list.end(), entries.begin()));
        EXPECT_EQ(namesIn("."), names) << "nothing is left beside it";
    });
    EXPECT_EQ(older.content(), "older") << "who reads the old file goes on doing so";
}

TEST_P(WholeFile, NewFileHasThePermissionsThatTheMaskLeaves)
{
    for (const mode_t mask : {0022, 0077, 0000}) {
        const mode_t before = umask(mask);
        for (const char* path : {"new.png", "new.jpg"}) {
            EXPECT_EQ(pad().save(ImageBmp, path), 0);
            EXPECT_EQ(statusOf(path).st_mode, S_IFREG | (0666 & ~mask)) << path;
        }
        EXPECT_EQ(decode(pad(), ImagePng, m_text, "decoded"), 0);
        EXPECT_EQ(statusOf("decoded").st_mode, S_IFREG | (0666 & ~mask));
        umask(before);
        for (const char* path : {"new.png", "new.jpg", "decoded"})
            fs::remove(path);
    }
}

TEST_P(WholeFile, LinkStaysAndLeadsToThePicture)
{
    fs::create_directory("far");
    makeFile("far/target.png", "older");
    fs::create_symlink("target.png", "far/second.png");
    fs::create_symlink("far/second.png", "first.png");
    const KeptFile older("far/target.png");
    saveBothWays("first.png", [&] {
        EXPECT_TRUE(fs::is_symlink("first.png"));
        EXPECT_TRUE(fs::is_symlink("far/second.png"));
        EXPECT_FALSE(older.is("far/target.png"));
        EXPECT_EQ(namesIn("far"), (std::vector<std::string>{"second.png", "target.png"}));
        expectPicture("far/target.png");
    });
}

TEST_P(WholeFile, LinkThatLeadsNowhereGetsItsTarget)
{
    fs::create_directory("far");
    fs::create_symlink("far/target.png", "link.png");
    ASSERT_EQ(pad().save(ImageBmp, "link.png"), 0);
    EXPECT_TRUE(fs::is_symlink("link.png"));
    expectPicture("far/target.png");
    fs::create_symlink("missing/target.png", "lost.png");
    expectRefused("lost.png");
}

TEST_P(WholeFile, AllNamesOfAFileShowThePicture)
{
    makeFile("one.png", "older");
    fs::create_hard_link("one.png", "two.png");
    const KeptFile older("one.png");
    saveBothWays("one.png", [&] {
        EXPECT_TRUE(older.is("one.png"));
        EXPECT_TRUE(older.is("two.png"));
        expectPicture("two.png");
    });
}

TEST_P(WholeFile, FileThatSomebodyHoldsByItsNumberIsWrittenInPlace)
{
    const int file = open("held", O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    fs::create_symlink("/proc/self/fd/" + std::to_string(file), "number.png");
    const KeptFile older("held");
    saveBothWays("number.png", [&] {
        EXPECT_TRUE(older.is("held"));
        expectPicture("held");
    });
    close(file);
}

TEST_P(WholeFile, PipeGetsThePicture)
{
    ASSERT_EQ(mkfifo("pipe.png", 0644), 0);
    for (const bool saves : {true, false}) {
        std::string received;
        std::thread reader([&] { received = fileContent("pipe.png"); });
        EXPECT_EQ(saves ? pad().save(ImageBmp, "pipe.png") : decode(pad(), ImagePng, m_text, "pipe.png"), 0);
        reader.join();
        EXPECT_TRUE(sameColors(decoded(QByteArray::fromStdString(received), "PNG"), canvas()));
        EXPECT_TRUE(fs::is_fifo("pipe.png"));
    }
}

TEST_P(WholeFile, FileOfAnotherGroupKeepsIt)
{
    makeFile("group.png", "older");
    if (chown("group.png", static_cast<uid_t>(-1), OrdinaryUser::nobody) != 0)
        GTEST_SKIP() << "needs a second group";
    const KeptFile older("group.png");
    saveBothWays("group.png", [&] {
        EXPECT_EQ(statusOf("group.png").st_gid, older.status().st_gid);
        EXPECT_TRUE(older.is("group.png"));
    });
}

TEST_P(WholeFile, FileOfAnotherUserKeepsItsOwner)
{
    makeFile("owner.png", "older");
    if (chown("owner.png", OrdinaryUser::nobody, static_cast<gid_t>(-1)) != 0)
        GTEST_SKIP() << "only root can give a file away";
    const KeptFile older("owner.png");
    saveBothWays("owner.png", [&] {
        EXPECT_EQ(statusOf("owner.png").st_uid, older.status().st_uid);
        EXPECT_TRUE(older.is("owner.png"));
    });
}

TEST_P(WholeFile, FolderThatCannotBeWrittenToKeepsItsFile)
{
    const OrdinaryUser user;
    const fs::path area = folder() / "closed";
    fs::create_directory(area);
    makeFile(area / "mine.png", "older");
    makeFile(area / "read-only.png", "older");
    fs::permissions(area / "read-only.png", fs::perms(0444));
    fs::permissions(area, fs::perms(0555));
    const KeptFile mine(area / "mine.png");
    saveBothWays(area / "mine.png", [&] { EXPECT_TRUE(mine.is(area / "mine.png")); });
    expectRefused(area / "read-only.png");
    expectRefused(area / "new.png");
    fs::permissions(area, fs::perms(0755));
    expectRefused(area / "read-only.png");
    EXPECT_EQ(fileContent(area / "read-only.png"), "older");
    EXPECT_EQ(namesIn(area), (std::vector<std::string>{"mine.png", "read-only.png"}));
}

TEST_P(WholeFile, StickyFolderOfAnotherUserKeepsItsFiles)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs a second user";
    const fs::path area = folder() / "sticky";
    fs::create_directory(area);
    fs::permissions(area, fs::perms(01777));
    {
        const OrdinaryUser user;
        makeFile(area / "mine.png", "older");
        const KeptFile mine(area / "mine.png");
        saveBothWays(area / "mine.png", [&] { EXPECT_TRUE(mine.is(area / "mine.png")); });
    }
    // In its owner's hands nothing is special about it.
    makeFile(area / "owners.png", "older");
    const KeptFile owners(area / "owners.png");
    saveBothWays(area / "owners.png", [&] { EXPECT_FALSE(owners.is(area / "owners.png")); });
}

TEST_P(WholeFile, MountedFileIsWrittenWhereItLies)
{
    makeFile("source", "older");
    makeFile("mounted.png", "below");
    if (mount("source", "mounted.png", nullptr, MS_BIND, nullptr) != 0)
        GTEST_SKIP() << "mounting is not allowed here";
    const KeptFile source("source");
    saveBothWays("mounted.png", [&] {
        EXPECT_TRUE(source.is("source"));
        expectPicture("source");
    });
    ASSERT_EQ(umount("mounted.png"), 0);
    EXPECT_EQ(fileContent("mounted.png"), "below");
}

TEST_P(WholeFile, FullDiskLeavesTheOlderFile)
{
    onAFullDisk(".png", [this](const fs::path& path) { expectRefused(path); });
    for (const char* name : {"replaced.png", "in-place.png"})
        saveBothWays(folder() / name, [] {});
}

TEST_P(WholeFile, DrawingOnAFullDiskLeavesTheOlderFileAndCountsAsSaved)
{
    const auto save = [this](const fs::path& path) {
        EXPECT_EQ(pad().save(ImageSvg, path.string()), 0) << path;
    };
    onAFullDisk(".svg", save);
    for (const char* name : {"replaced.svg", "in-place.svg"}) {
        save(folder() / name);
        save("here.svg");
        EXPECT_TRUE(fileContent(folder() / name) == fileContent("here.svg"));
    }
}

TEST_P(WholeFile, FullDiskTakesWhatFitsIntoTheOlderFile)
{
    const fs::path path = folder() / "same.bmp";
    ASSERT_EQ(pad().save(ImageBmp, path.string()), 0);
    const KeptFile older(path);
    const FullTmp full;
    if (!full.isFull())
        GTEST_SKIP() << "needs a /tmp of its own";
    EXPECT_EQ(pad().save(ImageBmp, path.string()), 0);
    EXPECT_TRUE(older.is(path));
    expectPicture(path);
}

TEST_P(WholeFile, LongerOlderFileIsCutInItsPlace)
{
    makeFile("long.png", std::string(3000000, 'x'));
    fs::create_hard_link("long.png", "second.png");
    saveBothWays("long.png", [] {
        EXPECT_EQ(fileContent("second.png").find("xxxx"), std::string::npos);
        EXPECT_LT(fs::file_size("second.png"), 3000000u);
    });
}

TEST_P(WholeFile, LeftoverOfAKilledProcessGoesWithTheNextSave)
{
    makeFile("older.png", "older");
    makeFile(".older.png.scribera-new", "complete once");
    ASSERT_EQ(pad().save(ImageBmp, "older.png"), 0);
    expectPicture("older.png");
    EXPECT_FALSE(fs::exists(".older.png.scribera-new"));
}

// Saves one picture after the other until it is killed.
const ChildProgram savesOnAndOn("saves-on-and-on", [](const std::vector<std::string>& arguments) {
    Pad pad(allCases().front());
    if (!pad.start())
        return 1;
    pad.draw(wave(pad.model(), 30));
    for (int saved = 0;; ++saved) {
        if (pad.save(ImageBmp, arguments.at(0)) != 0)
            return 2;
        if (saved == std::stoi(arguments.at(1)))
            std::thread([] {
                std::this_thread::sleep_for(std::chrono::milliseconds(3));
                kill(getpid(), SIGKILL);
            }).detach();
    }
});

TEST_P(WholeFile, KilledProcessLeavesAWholeFile)
{
    const QImage expected = canvas();
    for (int saves = 1; saves < 12; ++saves) {
        makeFile("killed.png", "older");
        const ChildResult result = runChild("saves-on-and-on", {"killed.png", std::to_string(saves)});
        EXPECT_EQ(result.signal, SIGKILL) << result.output;
        EXPECT_TRUE(sameColors(loaded("killed.png"), expected));
    }
}

INSTANTIATE_TEST_SUITE_P(, WholeFile, testing::Values(allCases().front()), caseName);

} // namespace
} // namespace scribera::test
