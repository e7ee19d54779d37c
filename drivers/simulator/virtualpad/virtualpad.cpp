#include "virtualpad.h"

#include "texts.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace virtualpad {
namespace {

namespace padlink = simulator::padlink;
using simulator::RecordedSample;

constexpr int GreetingScore = 80;
// A host that has opened the pad still sets its callbacks.
constexpr std::chrono::milliseconds PauseBeforeGreeting{300};

} // namespace

VirtualPad::VirtualPad(const simulator::Pad& pad)
    : m_state(pad), m_sampler(pad), m_server([this](int deviceType) { return welcome(deviceType); })
{
    m_tick.setTimerType(Qt::PreciseTimer);
    m_tick.setInterval(static_cast<int>(ReportInterval));
    connect(&m_tick, &QTimer::timeout, this, &VirtualPad::tick);
    m_readiness.setSingleShot(true);
    m_readiness.setInterval(PauseBeforeGreeting);
    connect(&m_readiness, &QTimer::timeout, this, &VirtualPad::playGreeting);
    connect(&m_server, &PadServer::hostCame, this, &VirtualPad::takeHost);
    connect(&m_server, &PadServer::hostLeft, this, &VirtualPad::loseHost);
    connect(&m_server, &PadServer::messageCame, this, &VirtualPad::takeMessage);
}

double VirtualPad::now()
{
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(time).count();
}

// --- The host

void VirtualPad::setModel(const simulator::Pad& pad)
{
    if (&pad == &m_state.pad())
        return;
    stopReplay();
    finishStroke();
    releaseKey();
    m_server.disconnectHost();
    m_state.setPad(pad);
    m_sampler.setPad(pad);
    Q_EMIT changed();
}

std::string VirtualPad::welcome(int deviceType)
{
    const simulator::Pad* wanted = simulator::padForDevice(deviceType, {});
    emitSamples(m_player.stop());
    finishStroke();
    releaseKey();
    if (wanted != nullptr && wanted->deviceType != m_state.pad().deviceType && !m_isPinned) {
        Q_EMIT noticed(
            tr("The host is for device type %1, so the pad is %2 now")
                .arg(deviceType)
                .arg(QString::fromUtf8(wanted->model.data(), static_cast<int>(wanted->model.size()))));
        m_state.setPad(*wanted);
        m_sampler.setPad(*wanted);
    }
    return std::string(m_state.pad().model);
}

void VirtualPad::takeHost(int deviceType)
{
    m_hostDeviceType = deviceType;
    m_samplesSent = 0;
    m_isGreeted = false;
    m_state.hostCame();
    Q_EMIT changed();
}

void VirtualPad::loseHost(const QString& reason)
{
    m_hostDeviceType.reset();
    m_readiness.stop();
    stopReplay();
    m_state.hostLeft();
    if (!reason.isEmpty())
        Q_EMIT noticed(tr("The host was disconnected: %1").arg(reason));
    Q_EMIT changed();
}

void VirtualPad::takeMessage(const padlink::Message& message)
{
    if (const auto* screen = std::get_if<padlink::Screen>(&message)) {
        m_state.showScreen(screen->on);
        if (screen->on && hasScreen(m_state.pad()))
            hostIsReady();
    } else if (std::holds_alternative<padlink::Clear>(message)) {
        m_state.clear();
        if (!hasScreen(m_state.pad()))
            hostIsReady();
    } else if (const auto* info = std::get_if<padlink::VersionInfo>(&message)) {
        m_state.showVersion(info->shown, info->text);
    } else if (const auto* style = std::get_if<padlink::PenStyle>(&message)) {
        m_state.setPenStyle(style->withPressure);
    } else if (const auto* picture = std::get_if<padlink::Picture>(&message)) {
        m_state.showPicture(*picture);
    }
    Q_EMIT changed();
}

// A host clears the pad and switches its screen on when it opens it.
void VirtualPad::hostIsReady()
{
    if (std::exchange(m_isGreeted, true) || (m_greeting.samples.empty() && m_greetingFinger.empty()))
        return;
    m_readiness.start();
}

void VirtualPad::setGreeting(simulator::Recording recording, bool loop, std::string finger)
{
    m_greeting = std::move(recording);
    m_greetingLoops = loop;
    m_greetingFinger = std::move(finger);
}

void VirtualPad::playGreeting()
{
    m_isFingerDue = !m_greetingFinger.empty();
    play(m_greeting, m_greetingLoops);
    if (!m_player.isPlaying())
        tick();
}

// --- The person

void VirtualPad::penDown(Place place, std::optional<double> pressure)
{
    if (m_player.isPlaying())
        return;
    finishStroke();
    m_sampler.down(now(), place, pressure);
    m_tick.start();
    tick();
}

void VirtualPad::penMove(Place place, std::optional<double> pressure)
{
    m_sampler.move(now(), place, pressure);
}

void VirtualPad::penUp()
{
    m_sampler.up(now());
}

void VirtualPad::touchKey(Key key)
{
    if (m_player.isPlaying())
        return;
    finishStroke();
    RecordedSample sample;
    sample.milliseconds = static_cast<std::int64_t>(now());
    sample.status = key == Key::Confirm ? simulator::ConfirmKey : simulator::CancelKey;
    emitSamples({sample});
}

void VirtualPad::releaseKey()
{
    if (m_player.isPlaying() || !m_state.pressedKey())
        return;
    RecordedSample sample;
    sample.milliseconds = static_cast<std::int64_t>(now());
    sample.status = simulator::PenUp;
    emitSamples({sample});
}

void VirtualPad::finishStroke()
{
    emitSamples(m_sampler.finish());
}

bool VirtualPad::readFinger(const std::string& source, std::vector<unsigned char>& pixels, std::string& error)
{
    constexpr std::uint64_t Seed = 1; // one person
    const std::optional<simulator::RidgePattern> pattern = simulator::ridgePatternByName(source);
    if (!pattern)
        return simulator::readGreyMap(source, pixels, error);
    pixels = simulator::syntheticFingerprint(*pattern, Seed);
    return true;
}

bool VirtualPad::putFinger(const std::string& source, int score, std::string& error)
{
    padlink::FingerprintScan scan;
    scan.score = score;
    if (!hasFingerprintSensor(m_state.pad())) {
        error =
            filled(trText("Simulator", "%1 has no fingerprint sensor"), {std::string(m_state.pad().model)});
        return false;
    }
    if (!readFinger(source, scan.pixels, error))
        return false;
    if (!m_server.hasHost()) {
        error = trText("Simulator", "no host takes the fingerprint");
        return false;
    }
    m_server.send(scan);
    return true;
}

// --- Recordings

void VirtualPad::startRecording()
{
    finishStroke();
    m_recorder.start(m_state.pad());
    Q_EMIT changed();
}

simulator::Recording VirtualPad::stopRecording()
{
    finishStroke();
    simulator::Recording recording = m_recorder.stop();
    Q_EMIT changed();
    return recording;
}

bool VirtualPad::startReplay(const std::string& path, bool loop, std::string& error)
{
    simulator::Recording recording;
    if (!simulator::readRecording(path, recording, error))
        return false;
    play(std::move(recording), loop);
    return true;
}

void VirtualPad::play(simulator::Recording recording, bool loop)
{
    emitSamples(m_player.stop());
    finishStroke();
    releaseKey();
    simulator::scaleRecording(recording, m_state.pad().area, m_state.pad().maxPressure);
    m_player.start(now(), std::move(recording), loop);
    m_tick.start();
    Q_EMIT changed();
}

void VirtualPad::stopReplay()
{
    if (!m_player.isPlaying())
        return;
    emitSamples(m_player.stop());
    Q_EMIT changed();
    Q_EMIT replayEnded();
}

// --- The samples

void VirtualPad::tick()
{
    if (m_player.isPlaying()) {
        emitSamples(m_player.takeUntil(now()));
        if (!m_player.isPlaying()) {
            Q_EMIT changed();
            Q_EMIT replayEnded();
        }
    } else {
        emitSamples(m_sampler.takeUntil(now()));
    }
    if (m_isFingerDue && !m_player.isPlaying()) {
        m_isFingerDue = false;
        std::string error;
        if (!putFinger(m_greetingFinger, GreetingScore, error))
            Q_EMIT noticed(QString::fromStdString(error));
    }
    if (!m_player.isPlaying() && !m_sampler.isActive())
        m_tick.stop();
}

void VirtualPad::emitSamples(const std::vector<RecordedSample>& samples)
{
    if (samples.empty())
        return;
    const std::optional<Key> key = m_state.pressedKey();
    padlink::Samples sent;
    for (const RecordedSample& sample : samples) {
        if (sample.status == simulator::PenDown) {
            m_strokeBegin = now();
            m_strokeSamples = 0;
        } else if (sample.status == simulator::PenMove && ++m_strokeSamples >= ReportRate / 4) {
            m_measuredRate = m_strokeSamples * 1000.0 / std::max(now() - m_strokeBegin, 1.0);
        }
        m_state.apply(sample);
        m_recorder.add(sample);
        sent.samples.push_back({sample.x, sample.y, sample.pressure, sample.status});
        if (sent.samples.size() == padlink::MostSamples)
            m_server.send(std::exchange(sent, padlink::Samples()));
    }
    if (!sent.samples.empty())
        m_server.send(sent);
    if (m_server.hasHost())
        m_samplesSent += static_cast<std::int64_t>(samples.size());
    Q_EMIT inkChanged();
    if (key != m_state.pressedKey())
        Q_EMIT changed();
}

} // namespace virtualpad
