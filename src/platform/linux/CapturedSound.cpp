#include "platform/linux/CapturedSound.h"

#include "audio/AudioQueue.h"
#include "platform/linux/Microphones.h"

namespace morvane {

namespace {

using namespace std::chrono_literals;

// A microphone sends silence as well. One that is pulled out just sends no more, and Qt doesn't tell.
constexpr auto watchInterval = 500ms;
constexpr int mostQuietTicks = 2;

// The server mixes and resamples to this whatever the device gives.
QAudioFormat format()
{
    QAudioFormat wanted;
    wanted.setSampleRate(AudioQueue::sampleRate);
    wanted.setChannelCount(1);
    wanted.setSampleFormat(QAudioFormat::Int16);
    return wanted;
}

} // namespace

class CapturedSound::Writer : public QIODevice {
public:
    Writer(std::function<void(std::span<const std::int16_t>)> sound, QObject *parent)
        : QIODevice(parent)
        , m_sound(std::move(sound))
    {
        open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }

    [[nodiscard]] bool isSequential() const override { return true; }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        m_sound({reinterpret_cast<const std::int16_t *>(data),
                 static_cast<std::size_t>(size) / sizeof(std::int16_t)});
        return size;
    }

private:
    std::function<void(std::span<const std::int16_t>)> m_sound;
};

CapturedSound::CapturedSound(QObject *parent)
    : QObject(parent)
    , m_watch(this)
{
    m_watch.setInterval(watchInterval);
    connect(&m_watch, &QTimer::timeout, this, &CapturedSound::watch);
}

CapturedSound::~CapturedSound()
{
    stop();
}

std::optional<AudioCapturing::Binding> CapturedSound::bind(const std::optional<QString> &uid)
{
    const Microphones::Found found = Microphones::find(uid);
    if (found.device.isNull())
        return std::nullopt;
    m_uid = uid;
    m_device = found.device;
    m_isChosen = found.isChosen;
    return AudioCapturing::Binding{found.isChosen,
                                   static_cast<double>(m_device.preferredFormat().sampleRate())};
}

bool CapturedSound::start(const std::function<void(std::span<const std::int16_t>)> &sound)
{
    stop();
    const Microphones::Found now = Microphones::find(m_uid);
    if (now.device.isNull() || now.isChosen != m_isChosen)
        return false;      // it is gone, or back: bind anew
    m_device = now.device; // the default may be another by now
    m_quietTicks = 0;
    m_writer = std::make_unique<Writer>(
        [this, sound](std::span<const std::int16_t> samples) {
            m_quietTicks = 0;
            sound(samples);
        },
        this);
    m_source = std::make_unique<QAudioSource>(m_device, format());
    connect(m_source.get(), &QAudioSource::stateChanged, this, &CapturedSound::stateChanged);
    m_source->start(m_writer.get());
    m_isOpen = m_source->error() == QAudio::NoError && m_source->state() != QAudio::StoppedState;
    if (m_isOpen)
        m_watch.start();
    return m_isOpen;
}

void CapturedSound::stop()
{
    m_isOpen = false;
    m_watch.stop();
    if (m_source)
        m_source->stop();
    m_source.reset();
    m_writer.reset();
}

void CapturedSound::stateChanged(QAudio::State state)
{
    if (state == QAudio::StoppedState)
        lose();
}

void CapturedSound::watch()
{
    if (++m_quietTicks > mostQuietTicks)
        lose();
}

void CapturedSound::lose()
{
    m_watch.stop();
    if (std::exchange(m_isOpen, false))
        Q_EMIT lost();
}

} // namespace morvane
