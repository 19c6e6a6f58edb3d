#pragma once

#include <QObject>
#include <QThread>

#include <memory>

namespace morvane {

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
    // Reach it by queued calls alone, also to delete it.
    template <typename Object>
    Object *adopt(std::unique_ptr<Object> object)
    {
        Object *adopted = object.release();
        take(adopted);
        return adopted;
    }

private:
    void take(QObject *object);

    QThread m_thread;
    QObject *m_owner = nullptr; // of what was adopted, on the thread
};

} // namespace morvane
