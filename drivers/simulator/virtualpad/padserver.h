// The virtual pad's end of the connection to the driver: where hosts come and go.
#pragma once

#include "padlink.h"
#include "padsocket.h"

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace virtualpad {

class PadServer : public QObject
{
    Q_OBJECT

public:
    // Told the device type of a host that comes, gives the model text of the pad.
    using Welcome = std::function<std::string(int deviceType)>;

    explicit PadServer(Welcome welcome);
    ~PadServer() override;

    // Takes the place of a socket that nobody listens at any more. False with "path: reason".
    bool listen(const std::string& path, std::string& error);

    bool hasHost() const { return m_host != nullptr; }
    // Nothing without a host.
    void send(const simulator::padlink::Message& message);
    void disconnectHost();

Q_SIGNALS:
    // Behind the welcome.
    void hostCame(int deviceType);
    // The reason is empty when there is nothing to complain of.
    void hostLeft(const QString& reason);
    void messageCame(const simulator::padlink::Message& message);

private:
    struct Peer;

    void acceptPeers();
    void read(Peer& peer);
    bool take(Peer& peer, simulator::padlink::Message&& message);
    bool introduce(Peer& peer, const simulator::padlink::Hello& hello);
    bool write(Peer& peer, const std::string& bytes);
    void flush(Peer& peer);
    void drop(Peer& peer, const QString& reason = QString());

    Welcome m_welcome;
    std::string m_path;
    simulator::Descriptor m_lock; // held as long as the path is this pad's
    simulator::Descriptor m_listening;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::vector<std::unique_ptr<Peer>> m_peers;
    Peer* m_host = nullptr;
};

} // namespace virtualpad
