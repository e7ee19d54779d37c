// Whose program is at the other end of a connection.
#pragma once

#include "client_stream.h"

namespace bridge {

// Whether it is this user's, or root's. Every user of the machine reaches a loopback address.
bool isOwnUsers(const ClientStream::Socket& socket);

} // namespace bridge
