// The virtual pad without its window: the pen, the keys and the finger of the person, the pad's screen, and
// the host at the other end.
#pragma once

#include "padserver.h"
#include "padstate.h"
#include "penplayer.h"
#include "penrecorder.h"
#include "pensampler.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace virtualpad {

class VirtualPad : public QObject
{
    Q_OBJECT

public:
    explicit VirtualPad(const simulator::Pad& pad);

    bool listen(const std::string& path, std::string& error) { return m_server.listen(path, error); }

    const PadState& state() const { return m_state; }

    // Another model is another pad: a connected host has to find it anew.
    void setModel(const simulator::Pad& pad);
    // A pinned model stays when a host comes for another device type.
    void setPinned(bool pinned) { m_isPinned = pinned; }
    bool isPinned() const { return m_isPinned; }

    std::optional<int> hostDeviceType() const { return m_hostDeviceType; }
    // The host's connection check fails with this model.
    bool isMismatch() const { return m_hostDeviceType && *m_hostDeviceType != m_state.pad().deviceType; }
    std::int64_t samplesSent() const { return m_samplesSent; }
    // Samples a second in the last stroke that was long enough to tell.
    double measuredRate() const { return m_measuredRate; }

    // The pen; nothing happens while a recording is replayed.
    void penDown(Place place, std::optional<double> pressure = std::nullopt);
    void penMove(Place place, std::optional<double> pressure = std::nullopt);
    void penUp();
    void touchKey(Key key);
    void releaseKey();

    // pattern: loop, whorl or arch; else the path of a grey map. False with a reason.
    bool putFinger(const std::string& source, int score, std::string& error);
    static bool readFinger(const std::string& source, std::vector<unsigned char>& pixels, std::string& error);

    void startRecording();
    simulator::Recording stopRecording();
    bool isRecording() const { return m_recorder.isRecording(); }

    bool startReplay(const std::string& path, bool loop, std::string& error);
    void stopReplay();
    bool isReplaying() const { return m_player.isPlaying(); }

    // What a host gets by itself as soon as it has opened the pad.
    void setGreeting(simulator::Recording recording, bool loop, std::string finger);
    void playGreeting();

Q_SIGNALS:
    void changed();     // of anything but ink
    void inkChanged();  // more of it
    void replayEnded(); // at the end of the recording or before
    void noticed(const QString& text);

private:
    static double now();

    std::string welcome(int deviceType);
    void takeHost(int deviceType);
    void loseHost(const QString& reason);
    void takeMessage(const simulator::padlink::Message& message);
    void hostIsReady();
    void play(simulator::Recording recording, bool loop);
    void tick();
    void emitSamples(const std::vector<simulator::RecordedSample>& samples);
    void finishStroke();

    PadState m_state;
    PenSampler m_sampler;
    PenPlayer m_player;
    PenRecorder m_recorder;
    PadServer m_server;
    QTimer m_tick;
    QTimer m_readiness;
    bool m_isPinned = false;
    std::optional<int> m_hostDeviceType;
    std::int64_t m_samplesSent = 0;

    double m_measuredRate = ReportRate;
    double m_strokeBegin = 0;
    int m_strokeSamples = 0;

    simulator::Recording m_greeting;
    bool m_greetingLoops = false;
    std::string m_greetingFinger;
    bool m_isFingerDue = false;
    bool m_isGreeted = false; // this host
};

} // namespace virtualpad
