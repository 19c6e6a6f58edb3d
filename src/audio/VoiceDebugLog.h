#pragma once

#include <QByteArrayList>
#include <QString>

#include <memory>

namespace morvane {

class Clock;
class Work;

// A private file of what happened around the microphone: states, counts and errors, never a word that was
// said. Lines are written in order beside the GUI thread. GUI thread.
class VoiceDebugLog {
public:
    static constexpr qint64 largestFile = 262'144; // bytes; then it is started anew

    // `work` ends before this object does, which writes what is left; the clock outlives it. A line that
    // can't be written is dropped.
    VoiceDebugLog(QString path, Clock &clock, Work &work);
    ~VoiceDebugLog();

    void note(const QString &line);

private:
    struct Queue;

    const QString m_path;
    Clock &m_clock;
    Work &m_work;
    std::shared_ptr<Queue> m_queue;
};

} // namespace morvane
