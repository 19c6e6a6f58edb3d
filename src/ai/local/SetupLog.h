#pragma once

#include "async/Clock.h"

#include <QByteArrayView>
#include <QString>

#include <mutex>

namespace morvane {

// The steps of setting up local AI and what the runtime said meanwhile, a line each with its time, in a file
// for the person to look at. It holds names of models and paths, and nothing that the person wrote. At its
// largest size the file becomes the former one (".1") and a new one begins. What can't be written is lost.
// Any thread.
class SetupLog {
public:
    static constexpr qint64 largestFile = qint64{256} << 10; // bytes
    static constexpr qsizetype longestLine = 500;            // characters

    // `clock` outlives the log.
    SetupLog(QString path, const Clock &clock);

    void write(const QString &line);

    // Output of the runtime, in pieces as they come.
    void takeOutput(QByteArrayView piece);

private:
    void append(const QByteArray &line);

    QString m_path;
    const Clock &m_clock;
    std::mutex m_mutex;
    QByteArray m_unfinished; // start of a line of output; of the one thread that has output
};

} // namespace morvane
