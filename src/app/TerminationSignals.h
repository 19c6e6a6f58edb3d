#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace morvane {

// Turns SIGTERM, SIGINT and SIGHUP into a signal of the event loop, so that a logout or a Ctrl+C ends the
// program the way its own Quit does. One at a time.
class TerminationSignals : public QObject {
    Q_OBJECT
public:
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    void received();

private:
    int m_readEnd = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace morvane
