// What a run leaves in the file system and takes away again, however it ends.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

// A file or an empty folder that is removed when this object ends, or by removeLeftovers().
class Leftover
{
public:
    explicit Leftover(const std::string& path);
    ~Leftover();
    Leftover(const Leftover&) = delete;
    Leftover& operator=(const Leftover&) = delete;

private:
    std::size_t m_slot;
};

// For a signal handler: the program ends here and now.
void removeLeftovers() noexcept;

// A folder for this user alone.
class PrivateFolder
{
public:
    // Throws Failure.
    PrivateFolder();

    const std::string& path() const { return m_path; }

    // The path of a file in the folder, which goes with it.
    std::string file(const std::string& name);

private:
    std::string m_path;
    Leftover m_folder;
    std::vector<std::unique_ptr<Leftover>> m_files; // gone before the folder
};
