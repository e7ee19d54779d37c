// A directory of its own for a program that opens a pad.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace scribera::test {

// Where the library finds its driver; the current directory while it lives.
class WorkDirectory
{
public:
    explicit WorkDirectory(const std::filesystem::path& driver)
    {
        namespace fs = std::filesystem;
        std::string name = (fs::temp_directory_path() / "scribera.XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw fs::filesystem_error("no temporary directory", name,
                                       std::error_code(errno, std::generic_category()));
        m_path = name;
        fs::create_symlink(driver, m_path / "libscriberadrv.so");
        fs::current_path(m_path);
    }
    ~WorkDirectory()
    {
        std::error_code ignored;
        std::filesystem::current_path("/", ignored);
        std::filesystem::remove_all(m_path, ignored);
    }
    WorkDirectory(const WorkDirectory&) = delete;
    WorkDirectory& operator=(const WorkDirectory&) = delete;

private:
    std::filesystem::path m_path;
};

} // namespace scribera::test
