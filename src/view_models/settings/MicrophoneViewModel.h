#pragma once

#include "async/TaskHandle.h"
#include "audio/AudioCapturing.h"
#include "audio/MicrophoneDevices.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace morvane {

class Alarm;
class Clock;
class SettingsStore;

// Settings > Voice, the microphone: which one is used, and a meter to try it by. What the trial hears is kept
// nowhere. While it is watched the devices are looked at every few seconds, since nothing tells of a change.
// GUI thread.
class MicrophoneViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QStringList devices READ devices NOTIFY changed) // the system's default first
    Q_PROPERTY(int device READ device WRITE setDevice NOTIFY changed)
    Q_PROPERTY(bool isTrying READ isTrying NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed) // why nothing can be heard; empty for none

public:
    using MakeEngine = std::function<std::unique_ptr<AudioCapturing>()>;

    // What is given outlives this object. Without `devices` there is the default alone, and no trial.
    MicrophoneViewModel(SettingsStore &settings, Clock &clock, MicrophoneDevices *devices,
                        MakeEngine makeEngine, QObject *parent = nullptr);
    ~MicrophoneViewModel() override;

    [[nodiscard]] QStringList devices() const;
    [[nodiscard]] int device() const;
    void setDevice(int index);
    [[nodiscard]] bool isTrying() const { return m_engine != nullptr; }
    [[nodiscard]] const QString &message() const { return m_message; }

    Q_INVOKABLE void setWatched(bool watched);
    // Opens the microphone, or closes it.
    Q_INVOKABLE void tryIt();
    // How loud the last moment was, 0 to 1.
    Q_INVOKABLE double level() const { return *m_level; }

Q_SIGNALS:
    void changed();

private:
    static QCoro::Task<> look(QPointer<MicrophoneViewModel> self, std::stop_token stop);
    static QCoro::Task<> open(QPointer<MicrophoneViewModel> self, std::shared_ptr<AudioCapturing> engine,
                              std::stop_token stop);
    void endTrial(const QString &message);

    SettingsStore &m_settings;
    Clock &m_clock;
    MicrophoneDevices *const m_list;
    const MakeEngine m_makeEngine;
    std::vector<MicrophoneDevices::Device> m_devices;
    std::shared_ptr<AudioCapturing> m_engine; // of the trial
    std::shared_ptr<std::atomic<float>> m_level = std::make_shared<std::atomic<float>>(0.0F);
    std::unique_ptr<Alarm> m_nextLook;
    QString m_message;
    TaskHandle m_looking;
    TaskHandle m_opening;
};

} // namespace morvane
