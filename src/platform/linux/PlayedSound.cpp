#include "platform/linux/PlayedSound.h"

#include "audio/AudioQueue.h"
#include "platform/linux/PulseServer.h"

#include <QAudioDevice>
#include <QMediaDevices>

#include <algorithm>

namespace morvane {

using namespace std::chrono_literals;

namespace {

constexpr auto serverLimit = 1s;
constexpr int millisecondsBuffered = 100; // what is heard after a stop, at most

QAudioFormat format()
{
    QAudioFormat wanted;
    wanted.setSampleRate(AudioQueue::sampleRate);
    wanted.setChannelCount(1);
    wanted.setSampleFormat(QAudioFormat::Int16);
    return wanted;
}

// Null when there is none.
QAudioDevice defaultOutput()
{
    const QList<QAudioDevice> outputs = QMediaDevices::audioOutputs();
    const auto defaults = PulseServer::defaults(serverLimit);
    const auto found = std::ranges::find_if(outputs, [&](const QAudioDevice &output) {
        return defaults && output.id() == defaults->sink.toUtf8();
    });
    return found != outputs.end() ? *found : outputs.value(0);
}

} // namespace

// What the sink pulls from: silence where the sound is late, and the end where it has ended.
class PlayedSound::Reader : public QIODevice {
public:
    Reader(AudioQueue &sound, QObject *parent)
        : QIODevice(parent)
        , m_sound(sound)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    [[nodiscard]] bool isSequential() const override { return true; }
    [[nodiscard]] bool atEnd() const override { return m_sound.isAtEnd(); }
    [[nodiscard]] qint64 bytesAvailable() const override
    {
        return atEnd() ? 0 : static_cast<qint64>(AudioQueue::samplesIn(1) * sizeof(std::int16_t));
    }

protected:
    qint64 readData(char *data, qint64 most) override
    {
        const std::span samples(reinterpret_cast<std::int16_t *>(data),
                                static_cast<std::size_t>(most) / sizeof(std::int16_t));
        if (atEnd())
            return 0;
        std::ranges::fill(samples.subspan(m_sound.read(samples)), std::int16_t{0});
        return static_cast<qint64>(samples.size_bytes());
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    AudioQueue &m_sound;
};

PlayedSound::PlayedSound(std::shared_ptr<AudioQueue> sound)
    : m_sound(std::move(sound))
    , m_reader(std::make_unique<Reader>(*m_sound, this))
{}

PlayedSound::~PlayedSound()
{
    m_hasEnded = true; // stopping the sink tells of it
    if (m_sink)
        m_sink->reset();
}

void PlayedSound::start()
{
    const QAudioDevice device = defaultOutput();
    if (device.isNull())
        return end(false);
    m_sink.emplace(device, format());
    m_sink->setBufferSize(format().bytesForDuration(millisecondsBuffered * 1000));
    connect(&*m_sink, &QAudioSink::stateChanged, this, &PlayedSound::stateChanged);
    m_sink->start(m_reader.get());
}

void PlayedSound::stateChanged(QAudio::State state)
{
    if (state == QAudio::StoppedState && m_sink->error() != QAudio::NoError)
        end(false);
    else if (state == QAudio::IdleState && m_sound->isAtEnd())
        end(true);
}

void PlayedSound::end(bool wasHeard)
{
    if (!std::exchange(m_hasEnded, true))
        Q_EMIT ended(wasHeard);
}

} // namespace morvane
