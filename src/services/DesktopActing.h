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
    // An event that was asked for, and the chat it was asked for in (by its scope key; empty for none).
    struct EventWish {
        QString title;
        QDateTime start;
        std::int64_t durationMinutes = 0;
        QString chat = {};
    };

    struct ShortcutAnswer {
        QString sentence;
        bool quotesOutput = false; // it holds words that neither the person nor this program wrote
    };

    virtual ~DesktopActing() = default;

    [[nodiscard]] virtual QCoro::Task<QString> openLink(QString url, std::stop_token stop) = 0;
    [[nodiscard]] virtual QCoro::Task<QString> createEvent(EventWish wish, std::stop_token stop) = 0;
    [[nodiscard]] virtual QCoro::Task<ShortcutAnswer> runShortcut(QString name, std::optional<QString> input,
                                                                  std::stop_token stop) = 0;
};

} // namespace morvane
