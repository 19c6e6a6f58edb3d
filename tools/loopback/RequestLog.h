#pragma once

#include <QFile>

namespace morvane {

struct Request;

// Writes what arrived, one JSON object a line, flushed line by line so that a test can follow it live:
//   {"request": 1, "method": …, "target": …, "headers": {…}, "body": …}   when a request is complete
//   {"request": 1, "clientLeft": true|false}                               when its answer is over
// Servers of one program may share it.
class RequestLog {
public:
    // A file, or "-" for standard output. An empty path writes nothing. False when it can't be opened.
    [[nodiscard]] bool open(const QString &path);

    // Gives the request its number.
    void arrived(Request &request);
    void ended(const Request &request, bool clientLeft);

private:
    void write(const QJsonObject &line);

    QFile m_file;
    int m_requests = 0;
};

} // namespace morvane
