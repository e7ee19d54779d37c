#include "padsocket.h"

#include "texts.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace simulator {
namespace {

bool defaultPath(std::string& path, std::string& error)
{
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && *runtime == '/') {
        path = std::string(runtime) + "/scribera-virtual-pad";
        return true;
    }
    const std::string folder = "/tmp/scribera-" + std::to_string(geteuid());
    // Whoever made the folder first may be somebody else, who must not become the pad.
    struct stat state = {};
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        error = filled(trText("Simulator", "%1: cannot be made: %2"),
                       {folder, std::generic_category().message(errno)});
        return false;
    }
    if (lstat(folder.c_str(), &state) != 0 || !S_ISDIR(state.st_mode) || state.st_uid != geteuid() ||
        (state.st_mode & 0777) != 0700) {
        error = filled(trText("Simulator", "%1: is no folder that belongs to this user alone"), {folder});
        return false;
    }
    path = folder + "/virtual-pad";
    return true;
}

} // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    if (this != &other) {
        close();
        m_number = std::exchange(other.m_number, -1);
    }
    return *this;
}

void Descriptor::close()
{
    if (m_number >= 0)
        ::close(std::exchange(m_number, -1));
}

bool padSocketPath(const std::string& setting, std::string& path, std::string& error)
{
    path = setting;
    if ((setting.empty() || setting == "1" || setting == "default") && !defaultPath(path, error))
        return false;
    if (path.size() < sizeof(sockaddr_un::sun_path))
        return true;
    error = filled(trText("Simulator", "%1: is longer than a socket's path may be, %2 bytes"),
                   {path, std::to_string(sizeof(sockaddr_un::sun_path) - 1)});
    return false;
}

Descriptor connectToPad(const std::string& path)
{
    Descriptor result(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), std::min(path.size(), sizeof address.sun_path - 1));
    if (result.isOpen() &&
        (connect(result.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
         !isTrustedPeer(result.get())))
        result.close();
    return result;
}

bool isTrustedPeer(int socket)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
        return false;
    if (peer.uid == geteuid() || peer.uid == 0)
        return true;
    errno = EPERM;
    return false;
}

} // namespace simulator
