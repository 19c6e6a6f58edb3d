#include "platform/linux/AudioOutput.h"

#include "async/AsyncStream.h"
#include "audio/AudioError.h"
#include "audio/AudioQueue.h"
#include "platform/linux/AudioThread.h"
#include "platform/linux/PlayedSound.h"

namespace morvane {

namespace {

// Silences the sound when its wait ends in whatever way.
class Hold {
public:
    explicit Hold(PlayedSound *sound)
        : m_sound(sound)
    {}
    ~Hold() { m_sound->deleteLater(); }
    Hold(const Hold &) = delete;
    Hold &operator=(const Hold &) = delete;

private:
    PlayedSound *m_sound;
};

} // namespace

QCoro::Task<> AudioOutput::play(std::shared_ptr<AudioQueue> sound, std::stop_token stop)
{
    PlayedSound *played = m_thread.adopt(std::make_unique<PlayedSound>(std::move(sound)));
    const Hold hold(played);
    auto ends = AsyncStream<bool>::make();
    const QObject receiver;
    QObject::connect(played, &PlayedSound::ended, &receiver,
                     [producer = ends.second](bool wasHeard) mutable { producer.yield(wasHeard); });
    QMetaObject::invokeMethod(played, &PlayedSound::start);
    const std::optional<bool> wasHeard = co_await ends.first.next(stop);
    if (!wasHeard.value_or(false))
        throw AudioError(AudioError::Case::playbackFailed);
}

} // namespace morvane
