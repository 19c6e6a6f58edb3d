#pragma once

#include "async/AsyncStream.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

#include <chrono>
#include <stop_token>

namespace morvane {

class Clock;

// A request to the desktop's portal (org.freedesktop.portal.Request, version 1), which may ask the person
// something and answers by a signal. Never blocks. GUI thread.
class PortalRequest final : public QObject {
    Q_OBJECT
public:
    enum class End {
        done,
        dismissed,
        failed,  // also for a portal that never answers
        noPortal // nothing was asked: this session has none, or one that doesn't know the method
    };

    // A person may be choosing for as long.
    static constexpr std::chrono::seconds patience{120};

    // `arguments` without the options, which every method takes last. `clock` outlives the task. Throws
    // CancelledError, and takes the question back then.
    [[nodiscard]] static QCoro::Task<End> run(QDBusConnection bus, QString interface, QString method,
                                              QVariantList arguments, Clock *clock, std::stop_token stop);

private Q_SLOTS:
    void responded(uint response, const QVariantMap &results);

private:
    using Ends = AsyncStream<End>;

    PortalRequest(QDBusConnection bus, Ends::Producer end);

    void ask(const QString &interface, const QString &method, QVariantList arguments);
    void takeBack();
    void finish(End end);

    QDBusConnection m_bus;
    Ends::Producer m_end;
    const QString m_token;
    const QString m_path; // of the request, as the portal makes it from the token
};

} // namespace morvane
