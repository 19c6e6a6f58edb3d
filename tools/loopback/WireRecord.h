#pragma once

#include <QByteArray>
#include <QFile>

namespace morvane {

// Every byte that crosses the wire, both ways, so that a test can search them all. One JSON object a line,
// flushed line by line:
//   {"connection": 1, "received": base64}
//   {"connection": 1, "sent": base64}
class WireRecord {
public:
    // Starts the file anew. An empty path records nothing. False when it can't be opened.
    [[nodiscard]] bool open(const QString &path);

    void received(int connection, QByteArrayView bytes);
    void sent(int connection, QByteArrayView bytes);

private:
    void write(int connection, const QString &direction, QByteArrayView bytes);

    QFile m_file;
};

} // namespace morvane
