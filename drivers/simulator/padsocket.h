// Where the virtual pad and the driver meet, and what both do with a socket.
#pragma once

#include <string>
#include <utility>

namespace simulator {

// An open file descriptor, closed with its owner.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor() { close(); }

    int get() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }
    void close();

private:
    int m_number = -1;
};

// The socket's path for a setting: the setting itself, or for "", "1" and "default" the default path, whose
// folder below /tmp is made when there is no $XDG_RUNTIME_DIR. False with "path: reason".
bool padSocketPath(const std::string& setting, std::string& path, std::string& error);

// A new non-blocking socket that is connected to the path. Not open when nobody listens there or somebody
// who is neither this user nor root; errno tells.
Descriptor connectToPad(const std::string& path);

// Whether the process at the other end runs as this user or as root.
bool isTrustedPeer(int socket);

} // namespace simulator
