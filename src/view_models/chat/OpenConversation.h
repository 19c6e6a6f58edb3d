#pragma once

#include <QObject>
#include <QString>

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
    // Both outlive this object.
    OpenConversation(ConversationRepository &repository, BannerDesk &banner, QObject *parent = nullptr);

    [[nodiscard]] const std::shared_ptr<Conversation> &current() const { return m_current; } // may be null
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString id() const; // empty for none

    // The newest chat if it is still empty, else a new one.
    void openAtStart();
    void openNew();
    void open(const QString &id);

    // Any chat, whether it is open or not.
    void remove(const QString &id);
    void rename(const QString &id, const QString &title);

Q_SIGNALS:
    void leaving(); // what works in the open chat is to stop
    void opened();  // another chat
    void renamed(); // the open chat
    void listChanged();

private:
    void set(std::shared_ptr<Conversation> conversation);

    ConversationRepository &m_repository;
    BannerDesk &m_banner;
    std::shared_ptr<Conversation> m_current;
};

} // namespace morvane
