#include "view_models/settings/MicrophoneViewModel.h"

#include "async/Clock.h"
#include "audio/AudioError.h"
#include "audio/AudioPlaying.h"
#include "audio/AudioQueue.h"
#include "audio/SoundLevel.h"
#include "persistence/SettingsStore.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto lookInterval = 3s;

} // namespace

MicrophoneViewModel::MicrophoneViewModel(SettingsStore &settings, Clock &clock, MicrophoneDevices *devices,
                                         MakeEngine makeEngine, AudioPlaying *output, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_clock(clock)
    , m_list(devices)
    , m_makeEngine(std::move(makeEngine))
    , m_output(output)
{
    connect(&settings, &SettingsStore::microphoneUIDChanged, this, &MicrophoneViewModel::changed);
}

MicrophoneViewModel::~MicrophoneViewModel() = default;

QStringList MicrophoneViewModel::devices() const
{
    QStringList names{u"The system's default"_s};
    for (const auto &device : m_devices)
        names.append(device.name);
    return names;
}

// One that is chosen and gone is not in the list: the default takes its place.
int MicrophoneViewModel::device() const
{
    const auto chosen = std::ranges::find(m_devices, m_settings.microphoneUID().value_or(QString()),
                                          &MicrophoneDevices::Device::uid);
    return chosen == m_devices.end() ? 0 : static_cast<int>(chosen - m_devices.begin()) + 1;
}

void MicrophoneViewModel::setDevice(int index)
{
    if (index < 0 || index > static_cast<int>(m_devices.size()))
        return;
    forgetTrial();
    if (index == 0)
        m_settings.setMicrophoneUID(std::nullopt);
    else
        m_settings.setMicrophoneUID(m_devices[static_cast<std::size_t>(index) - 1].uid);
}

void MicrophoneViewModel::setWatched(bool watched)
{
    m_looking = {};
    m_nextLook.reset();
    if (!watched)
        forgetTrial();
    else if (m_list)
        m_looking = TaskHandle::start(
            [self = QPointer(this)](std::stop_token stop) { return look(self, std::move(stop)); });
}

QCoro::Task<> MicrophoneViewModel::look(QPointer<MicrophoneViewModel> self, std::stop_token stop)
{
    const auto devices = co_await self->m_list->all(stop);
    if (!self || stop.stop_requested())
        co_return;
    if (self->m_devices != devices) {
        self->m_devices = devices;
        Q_EMIT self->changed();
    }
    self->m_nextLook = self->m_clock.after(lookInterval, [self] { self->setWatched(true); });
}

void MicrophoneViewModel::tryIt()
{
    if (isTrying() || !m_makeEngine)
        return endTrial({});
    forgetTrial();
    m_engine = m_makeEngine();
    m_heard = std::make_shared<AudioQueue>(AudioQueue::samplesIn(longestTrial.count()));
    m_trialEnd = m_clock.after(longestTrial, [this] { endTrial({}); });
    m_opening = TaskHandle::start([self = QPointer(this), engine = m_engine](std::stop_token stop) {
        return open(self, engine, std::move(stop));
    });
    Q_EMIT changed();
}

QCoro::Task<> MicrophoneViewModel::open(QPointer<MicrophoneViewModel> self,
                                        std::shared_ptr<AudioCapturing> engine, std::stop_token stop)
{
    QString failure;
    try {
        std::optional<QString> uid = self->m_settings.microphoneUID();
        co_await engine->bind(std::move(uid));
        if (self && !stop.stop_requested())
            co_await engine->start(self->tap());
    } catch (const AudioError &error) {
        failure = error.userMessage() + u' ' + error.recoverySuggestion().value_or(QString());
    }
    if (self && !stop.stop_requested() && !failure.isEmpty())
        self->endTrial(failure);
}

AudioCapturing::Tap MicrophoneViewModel::tap()
{
    AudioCapturing::Tap tap;
    tap.sound = [level = m_level, heard = m_heard](std::span<const std::int16_t> samples) {
        *level = SoundLevel::of(samples);
        heard->offer(samples);
    };
    tap.lost = [self = QPointer(this)] {
        if (self)
            self->endTrial(AudioError(AudioError::Case::noMicrophone).userMessage());
    };
    return tap;
}

bool MicrophoneViewModel::canPlayBack() const
{
    return m_output && !isTrying() && m_heard && !m_heard->isAtEnd();
}

void MicrophoneViewModel::playBack()
{
    if (std::exchange(m_isPlayingBack, canPlayBack())) {
        m_playing = {};
    } else if (m_isPlayingBack) {
        m_playing =
            TaskHandle::start([self = QPointer(this), sound = std::exchange(m_heard, nullptr)](
                                  std::stop_token stop) { return play(self, sound, std::move(stop)); });
    }
    Q_EMIT changed();
}

QCoro::Task<> MicrophoneViewModel::play(QPointer<MicrophoneViewModel> self, std::shared_ptr<AudioQueue> sound,
                                        std::stop_token stop)
{
    QString failure;
    try {
        co_await self->m_output->play(std::move(sound), stop);
    } catch (const AudioError &error) {
        failure = error.userMessage();
    }
    if (!self || stop.stop_requested())
        co_return;
    self->m_isPlayingBack = false;
    self->m_message = failure;
    Q_EMIT self->changed();
}

void MicrophoneViewModel::forgetTrial()
{
    m_playing = {};
    m_isPlayingBack = false;
    m_heard.reset(); // which wipes it
    endTrial({});
}

void MicrophoneViewModel::endTrial(const QString &message)
{
    m_opening = {};
    m_trialEnd.reset();
    if (m_heard)
        m_heard->finish();
    m_engine.reset(); // which closes the microphone
    *m_level = 0;
    m_message = message;
    Q_EMIT changed();
}

} // namespace morvane
