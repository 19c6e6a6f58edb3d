#pragma once

#include "async/TaskHandle.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <functional>

namespace morvane {

class BannerDesk;
class ChatMessage;
class CompanionViewModel;
class MessageListModel;
class SettingsStore;
class SpeechOutputting;

// Reads a reply aloud, at its end or when its button asks, with the voice and rate of the settings; the ghost
// speaks for as long. One reply at a time. GUI thread.
class ReplyReader : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isAvailable READ isAvailable CONSTANT)
    Q_PROPERTY(QString readingId READ readingId NOTIFY readingChanged) // of the reply; empty for none

public:
    // All outlive this object. Without speech nothing is read.
    struct Services {
        SettingsStore &settings;
        CompanionViewModel &companion;
        BannerDesk &banner;
        const MessageListModel &messages;
        SpeechOutputting *speech = nullptr;
        std::function<bool()> isListening = {}; // to the person, who isn't interrupted; absent: never
    };

    explicit ReplyReader(Services services, QObject *parent = nullptr);

    [[nodiscard]] bool isAvailable() const { return m_services.speech; }
    [[nodiscard]] const QString &readingId() const { return m_readingId; }

    // Reads the reply, or stops when that is the one being read.
    Q_INVOKABLE void toggle(const QString &messageId);

    // At the end of a turn. False when replies aren't read aloud, this one has no words, or the person is
    // speaking.
    bool readFinished(const ChatMessage &reply);

    // At once. The ghost falls silent with it.
    void stop();

Q_SIGNALS:
    void readingChanged();

private:
    enum class Asked { byTheSettings, byThePerson };

    void read(const ChatMessage &reply, Asked asked);
    static QCoro::Task<> speak(QPointer<ReplyReader> self, QString text, Asked asked, std::stop_token stop);
    void setReading(const QString &messageId);

    Services m_services;
    QString m_readingId;
    TaskHandle m_speaking;
};

} // namespace morvane
