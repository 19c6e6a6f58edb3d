#pragma once

#include "async/TaskHandle.h"
#include "audio/AudioCapturing.h"
#include "audio/MicrophoneDevices.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace morvane {

class Alarm;
class AudioPlaying;
class AudioQueue;
class Clock;
class SettingsStore;

// Settings > Voice, the microphone: which one is used, and a trial of a few seconds with a meter, which can
// be played back once. What it hears is kept nowhere: it goes with the playback or the page. While it is
// watched the devices are looked at every few seconds, since nothing tells of a change. GUI thread.
class MicrophoneViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QStringList devices READ devices NOTIFY changed) // the system's default first
    Q_PROPERTY(int device READ device WRITE setDevice NOTIFY changed)
    Q_PROPERTY(bool isTrying READ isTrying NOTIFY changed)
    Q_PROPERTY(bool canPlayBack READ canPlayBack NOTIFY changed)
    Q_PROPERTY(bool isPlayingBack READ isPlayingBack NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed) // why nothing can be heard; empty for none

public:
    static constexpr std::chrono::seconds longestTrial{10};

    using MakeEngine = std::function<std::unique_ptr<AudioCapturing>()>;

    // What is given outlives this object. Without `devices` there is the default alone, without `makeEngine`
    // no trial, and without `output` no playback.
    MicrophoneViewModel(SettingsStore &settings, Clock &clock, MicrophoneDevices *devices,
                        MakeEngine makeEngine, AudioPlaying *output, QObject *parent = nullptr);
    ~MicrophoneViewModel() override;

    [[nodiscard]] QStringList devices() const;
    [[nodiscard]] int device() const;
    void setDevice(int index);
    [[nodiscard]] bool isTrying() const { return m_engine != nullptr; }
    [[nodiscard]] bool canPlayBack() const;
    [[nodiscard]] bool isPlayingBack() const { return m_isPlayingBack; }
    [[nodiscard]] const QString &message() const { return m_message; }

    Q_INVOKABLE void setWatched(bool watched);
    // Opens the microphone, or closes it.
    Q_INVOKABLE void tryIt();
    // Plays what the trial heard, or stops that.
    Q_INVOKABLE void playBack();
    // How loud the last moment was, 0 to 1.
    Q_INVOKABLE double level() const { return *m_level; }

Q_SIGNALS:
    void changed();

private:
    static QCoro::Task<> look(QPointer<MicrophoneViewModel> self, std::stop_token stop);
    static QCoro::Task<> open(QPointer<MicrophoneViewModel> self, std::shared_ptr<AudioCapturing> engine,
                              std::stop_token stop);
    static QCoro::Task<> play(QPointer<MicrophoneViewModel> self, std::shared_ptr<AudioQueue> sound,
                              std::stop_token stop);
    [[nodiscard]] AudioCapturing::Tap tap();
    void forgetTrial();
    void endTrial(const QString &message);

    SettingsStore &m_settings;
    Clock &m_clock;
    MicrophoneDevices *const m_list;
    const MakeEngine m_makeEngine;
    AudioPlaying *const m_output;
    std::vector<MicrophoneDevices::Device> m_devices;
    std::shared_ptr<AudioCapturing> m_engine; // of the trial
    std::shared_ptr<std::atomic<float>> m_level = std::make_shared<std::atomic<float>>(0.0F);
    std::shared_ptr<AudioQueue> m_heard; // by the trial
    bool m_isPlayingBack = false;
    std::unique_ptr<Alarm> m_nextLook;
    std::unique_ptr<Alarm> m_trialEnd;
    QString m_message;
    TaskHandle m_looking;
    TaskHandle m_opening;
    TaskHandle m_playing;
};

} // namespace morvane
