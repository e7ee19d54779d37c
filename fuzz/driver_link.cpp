// The driver's end of the connection, as the thread that it is: the input is what a pad says before it hangs
// up. Its first byte tells how the bytes are cut into pieces, the second which call the driver's listener
// refuses.

#include "driverlink.h"
#include "fuzzer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace simulator;
using padlink::Message;
using padlink::Parser;

constexpr std::chrono::seconds Patience{30};
constexpr int DeviceType = 7;

fs::path g_directory;
Descriptor g_listening;

std::string socketPath()
{
    return (g_directory / "pad").string();
}

// What the driver is told, as messages, and the sample that lifts the pen of a lost pad.
class Listener final : public PadListener
{
public:
    explicit Listener(std::size_t refused) : m_refused(refused) {}

    bool takePadModel(const std::string& model) override
    {
        return note(padlink::Welcome{padlink::ProtocolVersion, model});
    }
    bool takePadSamples(const std::vector<ScrSimSample>& samples) override
    {
        return note(padlink::Samples{samples});
    }
    bool takePadFingerprint(const padlink::FingerprintScan& scan) override { return note(scan); }
    void takeLiftedPen(const ScrSimSample& sample) override
    {
        const std::lock_guard lock(m_mutex);
        require(!m_lifted, "a pen is lifted once");
        m_lifted = sample;
        m_changed.notify_all();
    }

    bool isLifted()
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, Patience, [this] { return m_lifted.has_value(); });
    }

    // Once the link has stopped.
    const std::vector<Message>& messages() const { return m_messages; }
    const std::optional<ScrSimSample>& lifted() const { return m_lifted; }

private:
    bool note(Message message)
    {
        const std::lock_guard lock(m_mutex);
        require(!m_lifted, "nothing comes behind the end");
        m_messages.push_back(std::move(message));
        return m_messages.size() != m_refused;
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Message> m_messages;
    std::optional<ScrSimSample> m_lifted;
    std::size_t m_refused; // counted from 1
};

struct Expected
{
    std::vector<Message> messages;
    std::optional<ScrSimSample> touching;
};

Expected expectedOf(std::string_view bytes, std::size_t refused)
{
    Expected expected;
    Parser(Parser::Peer::Pad).take(bytes, [&](Message&& message) {
        if (std::holds_alternative<padlink::Refusal>(message))
            return false;
        const auto* welcome = std::get_if<padlink::Welcome>(&message);
        if (welcome != nullptr && welcome->version != padlink::ProtocolVersion)
            return false;
        expected.messages.push_back(message);
        if (expected.messages.size() == refused)
            return false;
        if (const auto* samples = std::get_if<padlink::Samples>(&message)) {
            for (const ScrSimSample& sample : samples->samples) {
                if (sample.penStatus == 2)
                    expected.touching.reset();
                else if (sample.penStatus >= 0 && sample.penStatus <= 4)
                    expected.touching = sample;
            }
        }
        return true;
    });
    return expected;
}

void tellHost(DriverLink& link)
{
    static constexpr unsigned char Pixels[3 * 2 * 2] = {};
    link.clear();
    link.setPenStyle(true);
    link.showScreen(true);
    link.showVersion(true, "SCK421B\xff\n2");
    link.showPicture(Pixels, 3, 2);
}

// The driver may hang up before it has read everything. An engine's timer interrupts whatever waits.
void say(const Descriptor& pad, std::string_view bytes, std::size_t piece)
{
    while (!bytes.empty()) {
        const ssize_t count = send(pad.get(), bytes.data(), std::min(piece, bytes.size()), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    shutdown(pad.get(), SHUT_WR);
}

void listenToTheEnd(const Descriptor& pad)
{
    std::vector<Message> messages;
    Parser parser(Parser::Peer::Driver);
    std::array<char, 4096> block;
    for (;;) {
        const ssize_t count = recv(pad.get(), block.data(), block.size(), 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        const std::string_view bytes(block.data(), static_cast<std::size_t>(count));
        const bool isTaken = parser.take(bytes, [&](Message&& message) {
            messages.push_back(std::move(message));
            return true;
        });
        require(isTaken, "the driver keeps to the protocol");
    }
    require(!messages.empty() &&
                messages.front() == Message(padlink::Hello{padlink::ProtocolVersion, DeviceType}),
            "the driver says hello");
}

Descriptor accepted()
{
    const auto end = std::chrono::steady_clock::now() + Patience;
    pollfd event{g_listening.get(), POLLIN, 0};
    int ready = 0;
    while ((ready = poll(&event, 1, 1000)) == 0 || (ready < 0 && errno == EINTR))
        require(std::chrono::steady_clock::now() < end, "the driver comes");
    return Descriptor(accept4(g_listening.get(), nullptr, nullptr, SOCK_CLOEXEC));
}

void tidyUp()
{
    std::error_code ignored;
    fs::remove_all(g_directory, ignored);
}

} // namespace

int LLVMFuzzerInitialize(int*, char***)
{
    std::string name = (fs::temp_directory_path() / "scribera-fuzz.XXXXXX").string();
    require(mkdtemp(name.data()) != nullptr, "there is a temporary directory");
    g_directory = name;
    std::atexit(tidyUp);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = socketPath();
    require(path.size() < sizeof address.sun_path, "the directory's name is short");
    std::memcpy(address.sun_path, path.data(), path.size());
    g_listening = Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    require(g_listening.isOpen() &&
                bind(g_listening.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                listen(g_listening.get(), 4) == 0,
            "there is a socket");
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::size_t piece = data[0] == 0 ? ~std::size_t{0} : std::size_t{data[0]} * 16;
    const std::size_t refused = data[1];
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
    const Expected expected = expectedOf(bytes, refused);

    Listener listener(refused);
    DriverLink link(listener);
    require(link.start(socketPath(), DeviceType), "the link starts");
    tellHost(link);
    {
        const Descriptor pad = accepted();
        require(pad.isOpen(), "the driver is there");
        say(pad, bytes, piece);
        listenToTheEnd(pad);
    }
    require(!expected.touching || listener.isLifted(), "the pen of a lost pad is lifted");
    link.stop();

    require(listener.messages() == expected.messages, "the driver is told what the pad said");
    const auto& lifted = listener.lifted();
    require(lifted.has_value() == expected.touching.has_value(), "only a pen that touches is lifted");
    if (lifted)
        require(lifted->x == expected.touching->x && lifted->y == expected.touching->y &&
                    lifted->pressure == 0 && lifted->penStatus == 2,
                "the pen is lifted where it was");
    return 0;
}
