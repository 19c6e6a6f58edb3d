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

    void deliver(const QString &text, const Conversation &conversation);
    void tellFailure(const std::exception_ptr &error);
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
