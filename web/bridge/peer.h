// Whose program is at the other end of a connection.
#pragma once

#include <boost/asio/ip/tcp.hpp>

namespace bridge {

// Whether it is this user's, or root's. Every user of the machine reaches a loopback address.
bool isOwnUsers(const boost::asio::ip::tcp::socket& socket);

} // namespace bridge
