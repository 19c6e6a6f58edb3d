#pragma once

#include <QCoroTask>
#include <QDateTime>
#include <QString>

#include <optional>
#include <stop_token>

namespace morvane {

// What the abilities may do on the desktop, once the person has agreed. Each call answers with a sentence
// for the model, or throws a UserPresentableError. GUI thread.
class DesktopActing {
public:
    virtual ~DesktopActing() = default;

    [[nodiscard]] virtual QCoro::Task<QString> openLink(QString url, std::stop_token stop) = 0;
    [[nodiscard]] virtual QCoro::Task<QString>
    createEvent(QString title, QDateTime start, std::int64_t durationMinutes, std::stop_token stop) = 0;
    [[nodiscard]] virtual QCoro::Task<QString> runShortcut(QString name, std::optional<QString> input,
                                                           std::stop_token stop) = 0;
};

} // namespace morvane
