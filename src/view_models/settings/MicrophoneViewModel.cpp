#include "view_models/settings/MicrophoneViewModel.h"

#include "async/Clock.h"
#include "audio/AudioError.h"
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
                                         MakeEngine makeEngine, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_clock(clock)
    , m_list(devices)
    , m_makeEngine(std::move(makeEngine))
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
    endTrial({});
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
        endTrial({});
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
    m_engine = m_makeEngine();
    m_message.clear();
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
        AudioCapturing::Tap tap;
        if (self && !stop.stop_requested()) {
            tap.sound = [level = self->m_level](std::span<const std::int16_t> samples) {
                *level = SoundLevel::of(samples);
            };
            tap.lost = [self] {
                if (self)
                    self->endTrial(AudioError(AudioError::Case::noMicrophone).userMessage());
            };
            co_await engine->start(std::move(tap));
        }
    } catch (const AudioError &error) {
        failure = error.userMessage() + u' ' + error.recoverySuggestion().value_or(QString());
    }
    if (self && !stop.stop_requested() && !failure.isEmpty())
        self->endTrial(failure);
}

void MicrophoneViewModel::endTrial(const QString &message)
{
    m_opening = {};
    m_engine.reset(); // which closes the microphone
    *m_level = 0;
    m_message = message;
    Q_EMIT changed();
}

} // namespace morvane
