#include "http.h"

#include "log.h"
#include "peer.h"
#include "service.h"
#include "token.h"
#include "web_socket.h"

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace bridge {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using boost::system::error_code;
using namespace std::chrono_literals;

using HttpResponse = http::response<http::string_body>;

constexpr auto requestPatience = 10s;
constexpr std::uint32_t longestHeader = 8192;

class HttpClient : public std::enable_shared_from_this<HttpClient>
{
public:
    HttpClient(Service& service, ClientStream stream)
        : m_service(service), m_counted(service.sockets()), m_stream(std::move(stream)),
          m_buffer(longestHeader + longestMessage)
    {
        m_parser.header_limit(longestHeader);
        m_parser.body_limit(0);
    }

    void start()
    {
        m_stream.expireAfter(requestPatience); // for all of it
        m_stream.start([self = shared_from_this()](const error_code& error) {
            if (!error)
                self->read();
        });
    }

private:
    void read()
    {
        http::async_read(
            m_stream, m_buffer, m_parser, [self = shared_from_this()](const error_code& error, std::size_t) {
                if (!error)
                    self->handle();
                else if (error != http::error::end_of_stream &&
                         error.category() == http::make_error_code(http::error::end_of_stream).category())
                    self->refuse(http::status::bad_request, "this is no request that is served here");
            });
    }

    void handle()
    {
        const HttpRequest& request = m_parser.get();
        const std::string_view whole(request.target().data(), request.target().size());
        const std::string_view target = whole.substr(0, whole.find('?')); // what follows is the example's own
        const std::optional<std::string_view> origin = header(http::field::origin);
        const std::optional<std::string_view> host = header(http::field::host);
        m_isHead = request.method() == http::verb::head;
        if (!isOwnUsers(m_stream.socket())) {
            log("refused: a client of another user");
            refuse(http::status::forbidden, "the service is another user's");
            return;
        }
        if (!host || !isOwnHost(*host, m_service.port(), m_service.isSecure())) {
            log("refused: Host " + printable(host.value_or("missing")));
            refuse(http::status::forbidden, "the service has another address");
            return;
        }
        if (origin && !m_service.options().origins.isAllowed(*origin)) {
            log("refused: origin " + printable(*origin));
            refuse(http::status::forbidden, "pages of this origin are not allowed; see --allow-origin");
            return;
        }
        if (origin)
            m_origin = canonicalOrigin(*origin);
        if (target == "/pad") {
            upgrade();
            return;
        }
        if (request.method() != http::verb::get && request.method() != http::verb::head) {
            refuse(http::status::method_not_allowed, "GET and HEAD are served");
            return;
        }
        if (const Page* const page = m_service.pageAt(target))
            tell(*page);
        else
            refuse(http::status::not_found, "there is nothing");
    }

    // Nothing when it is missing, or there more than once: then the first one is not what others may have
    // looked at.
    std::optional<std::string_view> header(http::field field) const
    {
        const auto [first, end] = m_parser.get().equal_range(field);
        if (first == end)
            return std::nullopt;
        if (std::next(first) != end)
            return "(several)";
        return std::string_view(first->value().data(), first->value().size());
    }

    void upgrade()
    {
        const HttpRequest& request = m_parser.get();
        if (!websocket::is_upgrade(request)) {
            refuse(http::status::upgrade_required, "a WebSocket is served here");
            return;
        }
        if (m_origin.empty() && !m_service.options().allowsNoOrigin) {
            log("refused: a WebSocket without Origin");
            refuse(http::status::forbidden, "a WebSocket needs an Origin; see --allow-no-origin");
            return;
        }
        const auto protocols = request[http::field::sec_websocket_protocol];
        if (!http::token_list(protocols).exists(subprotocol)) {
            refuse(http::status::bad_request, "the subprotocol that is served is scribera-pad.1");
            return;
        }
        if (!m_service.hasRoom()) {
            refuse(http::status::service_unavailable, "there are as many connections as there may be");
            return;
        }
        if (m_buffer.size() > 0) {
            refuse(http::status::bad_request, "a client waits for the answer to its upgrade");
            return;
        }
        // This object goes, and with it the request, which has been read by then.
        serveWebSocket(m_service, std::move(m_counted), std::move(m_stream), m_origin, request);
    }

    void tell(const Page& page)
    {
        HttpResponse response = newResponse(http::status::ok, page.type);
        response.body() = page.content;
        std::string policy =
            "default-src 'none'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
        if (page.target == "/example") {
            // The example's own script and style are named by a number that nobody knows beforehand.
            const std::string nonce = newToken();
            const std::string placeholder = "@NONCE@";
            for (std::size_t at = response.body().find(placeholder); at != std::string::npos;
                 at = response.body().find(placeholder, at))
                response.body().replace(at, placeholder.size(), nonce);
            policy += "; script-src 'self' 'nonce-" + nonce + "'; style-src 'nonce-" + nonce +
                      "'; img-src blob: data:; connect-src 'self' " + ownSockets();
        }
        response.set("Content-Security-Policy", policy);
        send(std::move(response));
    }

    std::string ownSockets() const
    {
        const std::string scheme = m_service.isSecure() ? "wss://" : "ws://";
        const std::string port = ':' + std::to_string(m_service.port());
        return scheme + "127.0.0.1" + port + ' ' + scheme + "localhost" + port;
    }

    void refuse(http::status status, std::string_view reason)
    {
        HttpResponse response = newResponse(status, "text/plain; charset=utf-8");
        response.set("Content-Security-Policy", "default-src 'none'; frame-ancestors 'none'");
        if (status == http::status::method_not_allowed)
            response.set(http::field::allow, "GET, HEAD");
        if (status == http::status::upgrade_required)
            response.set(http::field::upgrade, "websocket");
        response.body() = std::string(reason) + '\n';
        send(std::move(response));
    }

    HttpResponse newResponse(http::status status, std::string_view type) const
    {
        HttpResponse response(status, 11);
        response.set(http::field::server, "scribera-bridge");
        response.set(http::field::content_type, beast::string_view(type.data(), type.size()));
        response.set(http::field::cache_control, "no-cache");
        response.set("X-Content-Type-Options", "nosniff");
        response.set("Referrer-Policy", "no-referrer");
        response.set(http::field::vary, "Origin");
        if (!m_origin.empty()) {
            response.set(http::field::access_control_allow_origin, m_origin);
            response.set("Cross-Origin-Resource-Policy", "cross-origin");
        }
        response.keep_alive(false);
        return response;
    }

    void send(HttpResponse response)
    {
        const auto kept = std::make_shared<HttpResponse>(std::move(response));
        kept->prepare_payload();
        const auto done = [self = shared_from_this(), kept](const error_code& error, std::size_t) {
            if (!error)
                self->finish();
        };
        if (m_isHead) {
            const auto serializer = std::make_shared<http::response_serializer<http::string_body>>(*kept);
            http::async_write_header(
                m_stream, *serializer,
                [done, serializer](const error_code& error, std::size_t size) { done(error, size); });
        } else {
            http::async_write(m_stream, *kept, done);
        }
    }

    void finish()
    {
        error_code ignored;
        m_stream.socket().shutdown(asio::socket_base::shutdown_send, ignored);
    }

    Service& m_service;
    Counted m_counted;
    ClientStream m_stream;
    beast::flat_buffer m_buffer;
    http::request_parser<http::empty_body> m_parser;
    std::string m_origin; // allowed; empty without one
    bool m_isHead = false;
};

} // namespace

void serveHttp(Service& service, ClientStream::Socket socket)
{
    std::make_shared<HttpClient>(service, ClientStream(std::move(socket), service.tls()))->start();
}

} // namespace bridge
