#include "peer.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>

namespace bridge {
namespace {

using boost::asio::ip::tcp;

// As the system's table has it: words of the address as they lie in memory, and the port.
std::string inTable(const tcp::endpoint& endpoint)
{
    std::string text;
    std::array<char, 16> word{};
    const auto* const bytes = reinterpret_cast<const char*>(endpoint.data());
    const auto put = [&](std::size_t from, std::size_t count) {
        for (std::size_t at = from; at < from + count; at += sizeof(std::uint32_t)) {
            std::uint32_t number = 0;
            std::memcpy(&number, bytes + at, sizeof number);
            std::snprintf(word.data(), word.size(), "%08X", number);
            text += word.data();
        }
    };
    if (endpoint.protocol() == tcp::v4())
        put(offsetof(sockaddr_in, sin_addr), sizeof(in_addr));
    else
        put(offsetof(sockaddr_in6, sin6_addr), sizeof(in6_addr));
    std::snprintf(word.data(), word.size(), ":%04X", static_cast<unsigned>(endpoint.port()));
    return text + word.data();
}

} // namespace

bool isOwnUsers(const ClientStream::Socket& socket)
{
    boost::system::error_code error;
    const tcp::endpoint theirs = socket.remote_endpoint(error);
    const tcp::endpoint ours = error ? tcp::endpoint() : socket.local_endpoint(error);
    if (error)
        return false;
    const std::string wanted = inTable(theirs) + ' ' + inTable(ours);
    std::ifstream table(theirs.protocol() == tcp::v4() ? "/proc/self/net/tcp" : "/proc/self/net/tcp6");
    std::string line;
    while (std::getline(table, line)) {
        const std::size_t at = line.find(wanted);
        if (at == std::string::npos)
            continue;
        // Only while both ends are there does the table know whose socket it is.
        std::istringstream rest(line.substr(at + wanted.size()));
        std::string state;
        std::string queues;
        std::string timer;
        std::string retransmits;
        uid_t user = 0;
        return rest >> state >> queues >> timer >> retransmits >> user && state == "01" &&
               (user == 0 || user == geteuid());
    }
    return false;
}

} // namespace bridge
