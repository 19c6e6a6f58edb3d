#pragma once

#include "async/AsyncStream.h"

#include <QCoroTask>
#include <QObject>
#include <QThread>

#include <functional>
#include <memory>
#include <optional>

namespace morvane {

// A call on the audio thread, of which it tells when it is done. Lives there.
class AudioCall : public QObject {
    Q_OBJECT
Q_SIGNALS:
    void done();
};

// The thread on which sound devices are opened, fed and closed: opening waits for the sound server, and a
// stream must go on while the window is busy. It starts when it is first needed and sleeps when no device is
// open. Made, called and destroyed on the GUI thread.
class AudioThread {
public:
    AudioThread() = default;
    ~AudioThread();
    AudioThread(const AudioThread &) = delete;
    AudioThread &operator=(const AudioThread &) = delete;

    // Hands an object without a parent over to the thread, which deletes it at its own end at the latest.
    // Reach it by queued calls or ask() alone, also to delete it.
    template <typename Object>
    Object *adopt(std::unique_ptr<Object> object)
    {
        Object *adopted = object.release();
        take(adopted);
        return adopted;
    }

    // What `work` returns, which runs there; calls run in the order in which they were asked.
    template <typename T>
    [[nodiscard]] QCoro::Task<T> ask(std::function<T()> work, std::stop_token stop = {})
    {
        const auto result = std::make_shared<std::optional<T>>();
        AudioCall *call = adopt(std::make_unique<AudioCall>());
        auto ends = AsyncStream<bool>::make();
        const QObject receiver;
        QObject::connect(call, &AudioCall::done, &receiver,
                         [producer = ends.second]() mutable { producer.yield(true); });
        QMetaObject::invokeMethod(call, [call, result, work = std::move(work)] {
            result->emplace(work());
            Q_EMIT call->done();
            call->deleteLater();
        });
        co_await ends.first.next(stop);
        co_return **result;
    }

private:
    void take(QObject *object);

    QThread m_thread;
    QObject *m_owner = nullptr; // of what was adopted, on the thread
};

} // namespace morvane
