#pragma once

#include "async/TaskHandle.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <exception>
#include <optional>

namespace morvane {

class CompanionViewModel;
class Conversation;
class ReplyNotifying;
class SettingsStore;
class SpeechOutputting;

// Brings the end of a turn to the person: aloud, and where the window is not in front by a notification,
// which never shows a reply's text. A turn that waits for their yes is told of the same way. GUI thread.
class ReplyDelivery : public QObject {
    Q_OBJECT
public:
    // All outlive this object. Without speech nothing is read aloud, without notifications none is posted.
    struct Services {
        SettingsStore &settings;
        CompanionViewModel &companion;
        SpeechOutputting *speech = nullptr;
        ReplyNotifying *notifications = nullptr;
    };

    explicit ReplyDelivery(Services services, QObject *parent = nullptr);

    void setWindowInFront(bool inFront);

    // Of a Ghost chat not even the title is told.
    enum class Kind { saved, ghost };

    void deliver(const QString &text, const Conversation &conversation, Kind kind);
    void tellFailure(const std::exception_ptr &error, Kind kind);
    // What was told of Ghost chats is taken back.
    void withdrawGhosts();
    void tellApproval(const QString &verb);
    void withdrawApproval();
    void stopSpeaking();

private:
    static QCoro::Task<> speak(QPointer<ReplyDelivery> self, QString text, std::stop_token stop);

    Services m_services;
    bool m_isWindowInFront = true;
    TaskHandle m_speaking;
};

} // namespace morvane
