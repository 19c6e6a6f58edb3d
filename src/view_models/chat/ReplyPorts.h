#pragma once

#include <QCoroTask>
#include <QString>
#include <QUuid>

#include <optional>
#include <stop_token>

namespace morvane {

// What the chat asks of the desktop around it. Adapters live with the platform; without one nothing happens.

// Reads replies aloud.
class SpeechOutputting {
public:
    virtual ~SpeechOutputting() = default;

    // Ends when the speech has ended or was stopped. `rate` runs from 0, slowest, to 1.
    [[nodiscard]] virtual QCoro::Task<> speak(QString text, std::optional<QString> voice, double rate,
                                              bool speakCodeBlocks, std::stop_token stop) = 0;
    virtual void stop() = 0;
};

// Tells the person about a turn that ended while the window was not in front. Never shows reply text.
class ReplyNotifying {
public:
    virtual ~ReplyNotifying() = default;
    virtual void replyReady(const QUuid &conversation, const QString &title) = 0;
    virtual void ghostReplyReady() = 0;
    virtual void replyFailed(const QString &message, const QString &suggestion) = 0;
};

} // namespace morvane
