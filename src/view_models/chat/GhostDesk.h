#pragma once

#include "view_models/chat/GhostQuestion.h"
#include "view_models/chat/OpenConversation.h"

#include <QObject>
#include <QUuid>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <optional>

namespace morvane {

class BannerDesk;
class ChatStores;
class Conversation;

// Asked when Ghost mode is turned off in a chat that holds messages.
struct GhostModeOffQuestion {
    QUuid id;
    QUuid chatID;
};

// Asked when such a chat is left in any other way.
struct GhostDeparture {
    QUuid id;
    std::function<void()> then; // once the chat was dropped or kept
};

// What stands beside the Ghost button.
struct GhostExplainer {
    Q_GADGET
    QML_VALUE_TYPE(ghostExplainer)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString body MEMBER body)
    Q_PROPERTY(QString stateLine MEMBER stateLine)

public:
    QString title;
    QString body;
    QString stateLine; // what the button does now
};

// The life of the Ghost chat: how it begins, what is asked before it is left, and its two ends. GUI thread.
class GhostDesk : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isOn READ isOn NOTIFY isOnChanged)
    Q_PROPERTY(bool canToggle READ canToggle NOTIFY changed)
    Q_PROPERTY(bool savesWhenTurnEnds READ savesWhenTurnEnds NOTIFY changed)
    Q_PROPERTY(morvane::GhostExplainer explainer READ explainer NOTIFY changed)
    // What waits for an answer; no id for nothing.
    Q_PROPERTY(QString questionId READ questionId NOTIFY questionChanged)
    Q_PROPERTY(QString questionTitle READ questionTitle NOTIFY questionChanged)
    Q_PROPERTY(QString questionText READ questionText NOTIFY questionChanged)
    Q_PROPERTY(QStringList questionButtons READ questionButtons NOTIFY questionChanged)
    Q_PROPERTY(bool questionDrops READ questionDrops NOTIFY questionChanged) // by its first button

public:
    // All of it outlives this object.
    struct Services {
        ChatStores &stores;
        OpenConversation &open;
        BannerDesk &banner;
        std::function<bool(const Conversation &)> isAtWork; // a turn writes into the chat
        std::function<void()> endTurns;                     // all have ended when it returns
        std::function<bool()> isLocked;                     // nothing can be saved; absent: never
    };

    explicit GhostDesk(Services services, QObject *parent = nullptr);

    [[nodiscard]] bool isOn() const;
    [[nodiscard]] bool holdsMessages() const;
    // Ghost mode begins in an empty chat only, and ends in any.
    [[nodiscard]] bool canToggle() const;
    [[nodiscard]] bool savesWhenTurnEnds() const { return m_ghostSaveWhenTurnEnds.has_value(); }
    [[nodiscard]] GhostExplainer explainer() const;

    [[nodiscard]] QString questionId() const;
    [[nodiscard]] QString questionTitle() const { return question().title; }
    [[nodiscard]] QString questionText() const { return question().text; }
    [[nodiscard]] QStringList questionButtons() const { return question().buttons; }
    [[nodiscard]] bool questionDrops() const { return m_pendingGhostDeparture.has_value(); }
    // An answer counts only for the question that it was given to.
    Q_INVOKABLE void answer(const QString &questionId, int button);

    // The Ghost button.
    Q_INVOKABLE void toggleGhostMode();
    // A Ghost chat in place of the open chat, whatever that holds.
    Q_INVOKABLE void newGhostChat();

    // For whatever opens another chat: `then` runs at once, or when the person has let the Ghost chat go or
    // kept it, and never when they stay.
    void leave(std::function<void()> then);

    // The two ends. False when it could not be saved: that is shown, and the Ghost chat stays open.
    bool keepGhost();
    void dropGhost();

    void turnEnded();

Q_SIGNALS:
    void isOnChanged();
    void changed();
    void questionChanged();
    void retired(bool wasDropped); // there is no Ghost chat any more

private:
    [[nodiscard]] GhostQuestion question() const;
    [[nodiscard]] bool isLocked() const { return m_services.isLocked && m_services.isLocked(); }
    void answerModeOff(GhostQuestion::Answer answer);
    void answerDeparture(GhostQuestion::Answer answer);
    void begin(OpenConversation::Composer composer);
    void depart(const std::function<void()> &then);
    void retire(bool wasDropped);

    Services m_services;
    std::optional<GhostModeOffQuestion> m_pendingGhostModeOff;
    std::optional<GhostModeOffQuestion> m_ghostSaveWhenTurnEnds; // answered with a yes while a reply came in
    std::optional<GhostDeparture> m_pendingGhostDeparture;
};

} // namespace morvane
