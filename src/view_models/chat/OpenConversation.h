#pragma once

#include <QObject>
#include <QString>
#include <QUuid>

#include <memory>

namespace morvane {

class BannerDesk;
class Conversation;
class ConversationRepository;

// The chat that is open: another one is opened, made, removed or renamed here. What goes wrong is shown on
// the desk. GUI thread.
class OpenConversation : public QObject {
    Q_OBJECT
public:
    // What becomes of what stands in the composer when another chat is opened.
    enum class Composer {
        ofChat, // it is left with its chat, and what was left with the other one comes back
        stays,
    };
    Q_ENUM(Composer)

    // Both outlive this object.
    OpenConversation(ConversationRepository &repository, BannerDesk &banner, QObject *parent = nullptr);

    [[nodiscard]] const std::shared_ptr<Conversation> &current() const { return m_current; } // may be null
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString id() const; // empty for none

    // The chat of that id at the next openAtStart(), if it is still there.
    void remember(const QString &id) { m_remembered = id; }
    // The remembered chat; without it the newest if it is still empty, else a new one.
    void openAtStart();
    void openNew(Composer composer = Composer::ofChat);
    void open(const QString &id);
    [[nodiscard]] bool canOpen(const QString &id) const;
    // A chat that the repository doesn't have, or that stands in for the open one; with the composer of the
    // open chat nothing works in that any more.
    void show(std::shared_ptr<Conversation> conversation, Composer composer);
    // No chat is open.
    void close();

    // Any chat, whether it is open or not.
    void remove(const QString &id);
    void rename(const QString &id, const QString &title);

Q_SIGNALS:
    void leaving();                                            // what works in the open chat is to stop
    void opened(morvane::OpenConversation::Composer composer); // another chat, or none
    void renamed();                                            // the open chat
    void removed(const QUuid &conversation);                   // from the store, whether it was open or not
    void listChanged();

private:
    void set(std::shared_ptr<Conversation> conversation, Composer composer = Composer::ofChat);

    ConversationRepository &m_repository;
    BannerDesk &m_banner;
    std::shared_ptr<Conversation> m_current;
    QString m_remembered;
};

} // namespace morvane
