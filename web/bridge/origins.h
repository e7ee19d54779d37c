// Which pages may use the pads, and under which names the service may be addressed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace bridge {

// An origin as browsers send it: scheme://host[:port], in lower case, no path, the port only where it is not
// the scheme's own. Empty when the text is none; a "null" is none.
std::string canonicalOrigin(std::string_view text);

class Origins
{
public:
    // Of pages whose host is a loopback address or localhost, on any port.
    void allowLoopback(bool isAllowed) { m_isLoopbackAllowed = isAllowed; }
    // False when the text is no origin.
    bool allow(std::string_view origin);
    // As it came in a request.
    bool isAllowed(std::string_view origin) const;

private:
    bool m_isLoopbackAllowed = true;
    std::vector<std::string> m_allowed;
};

// Whether the Host header names this machine's own service. Another name that leads here is a page's attempt
// to pass for it.
bool isOwnHost(std::string_view host, unsigned short port, bool isSecure);

} // namespace bridge
