#pragma once

#include "async/TaskHandle.h"
#include "view_models/find/FindPlace.h"
#include "view_models/find/FindTerms.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUuid>
#include <QtQml/qqmlregistration.h>

#include <optional>
#include <vector>

namespace morvane {

class ChatMessage;
class Clock;
class ConversationRepository;
class MessageListModel;
class Work;

// Finds words in the open chat, in the text as it is drawn. Texts are opened and read by the portion on a
// worker and dropped; only numbers are kept. A message that changes is read again. GUI thread.
class FindViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY isOpenChanged)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    // What the view marks; empty while nothing is to be marked.
    Q_PROPERTY(morvane::FindTerms terms READ terms NOTIFY termsChanged)
    Q_PROPERTY(int count READ count NOTIFY changed)
    Q_PROPERTY(int position READ position NOTIFY changed) // of the current find, from 1; 0 for none
    Q_PROPERTY(bool isSearching READ isSearching NOTIFY changed)
    Q_PROPERTY(morvane::FindPlace current READ current NOTIFY currentChanged)

public:
    // All outlive it, and what it has begun ends with `work`.
    FindViewModel(MessageListModel &messages, ConversationRepository &repository, Clock &clock, Work &work,
                  QObject *parent = nullptr);

    [[nodiscard]] bool isOpen() const { return m_isOpen; }
    [[nodiscard]] const QString &query() const { return m_query; }
    void setQuery(const QString &query);
    [[nodiscard]] FindTerms terms() const { return m_isOpen ? m_terms : FindTerms(); }
    [[nodiscard]] int count() const;
    [[nodiscard]] int position() const;
    [[nodiscard]] bool isSearching() const { return m_isSearching; }
    [[nodiscard]] FindPlace current() const { return m_current; }

    // Begins at the first find in this row or below, that is where the person reads.
    Q_INVOKABLE void open(int row);
    // Begins at the message that the search over all chats has found; at the first find where it is gone.
    Q_INVOKABLE void openAt(const QString &query, const QString &messageId);
    // Whether it was open.
    Q_INVOKABLE bool close();
    // The next find, and from the last one the first.
    Q_INVOKABLE void next() { step(1); }
    Q_INVOKABLE void previous() { step(-1); }

Q_SIGNALS:
    void isOpenChanged();
    void queryChanged();
    void termsChanged();
    void changed();
    void currentChanged();
    void opened(); // also when it was open already

private:
    // How many finds a message has, for one revision of it.
    struct Counted {
        std::uint64_t revision = 0;
        std::vector<int> blocks;
        int total = 0;
    };
    struct Portion;

    static QCoro::Task<> search(QPointer<FindViewModel> self, std::stop_token stop);
    void start(int row);
    void searchOn();
    [[nodiscard]] Portion nextPortion() const;
    [[nodiscard]] bool isCounted(const ChatMessage &message) const;
    [[nodiscard]] int rowCount() const;
    [[nodiscard]] const Counted *countedAt(int row) const;
    void pick(bool isComplete);
    void step(int direction);
    void setCurrent(const FindPlace &place);
    [[nodiscard]] std::optional<FindPlace> placeIn(int row, int number) const;
    [[nodiscard]] int numberOf(const FindPlace &place) const;
    void followCurrent();

    MessageListModel &m_messages;
    ConversationRepository &m_repository;
    Clock &m_clock;
    Work &m_work;
    bool m_isOpen = false;
    QString m_query;
    FindTerms m_terms;
    QHash<QUuid, Counted> m_counted;
    int m_from = 0; // the row at which a search begins
    bool m_isSearching = false;
    FindPlace m_current;
    QUuid m_currentMessage;
    TaskHandle m_search;
};

} // namespace morvane
