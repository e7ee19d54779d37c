#include "leftovers.h"

#include "failures.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <unistd.h>

namespace {

struct Slot
{
    std::atomic<bool> isTaken{false}; // last, once the path is written
    std::array<char, PATH_MAX> path{};
};

// Not on the heap, since a signal handler walks them. The main thread and the one that saves a signature
// while it waits take and give back slots.
std::array<Slot, 24> slots;
std::atomic<std::size_t> usedSlots{0};

void removePath(const char* path)
{
    if (unlink(path) != 0)
        rmdir(path);
}

std::string madeFolder()
{
    std::error_code error;
    std::filesystem::path parent = std::filesystem::temp_directory_path(error);
    if (error)
        parent = "/tmp";
    std::string name = (parent / "scribera-pad.XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw Failure{
            Text::tr("no folder can be made in %1: %2")
                .arg(QString::fromStdString(parent.string()), QString::fromLocal8Bit(std::strerror(errno)))};
    return name;
}

} // namespace

Leftover::Leftover(const std::string& path) : m_slot(usedSlots.load())
{
    if (m_slot >= slots.size() || path.size() >= slots[m_slot].path.size())
        throw std::length_error("too many or too long leftovers");
    std::copy(path.begin(), path.end() + 1, slots[m_slot].path.begin());
    slots[m_slot].isTaken = true;
    ++usedSlots;
}

Leftover::~Leftover()
{
    removePath(slots[m_slot].path.data());
    slots[m_slot].isTaken = false;
    // Whoever is made last usually goes first; the others keep their slots until all of them are gone.
    while (usedSlots > 0 && !slots[usedSlots - 1].isTaken)
        --usedSlots;
}

// From the end, since folders come before their files.
void removeLeftovers() noexcept
{
    for (std::size_t slot = slots.size(); slot-- > 0;)
        if (slots[slot].isTaken)
            removePath(slots[slot].path.data());
}

PrivateFolder::PrivateFolder() : m_path(madeFolder()), m_folder(m_path) {}

std::string PrivateFolder::file(const std::string& name)
{
    std::string path = m_path + "/" + name;
    m_files.push_back(std::make_unique<Leftover>(path));
    return path;
}
