#pragma once

#include "async/TaskHandle.h"
#include "view_models/sidebar/SearchTerms.h"

#include <QAbstractListModel>
#include <QHash>
#include <QPointer>
#include <QString>
#include <QUuid>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace morvane {

class Clock;
class Work;
class ConversationRepository;

// The chats whose title or messages hold every word of a query: first those found by their title, then those
// found by a message, latest message first. Each chat once.
//
// Texts are opened by the portion on a worker and dropped; nothing readable is kept but the titles, for as
// long as the search runs. GUI thread.
class HistorySearchModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(bool isActive READ isActive NOTIFY queryChanged)
    Q_PROPERTY(bool isSearching READ isSearching NOTIFY isSearchingChanged)
    Q_PROPERTY(int count READ countNow NOTIFY countChanged)

public:
    enum Role {
        ConversationIdRole = Qt::UserRole + 1, // text, for ChatViewModel::open
        TitleRole,
        ExcerptRole,   // empty when the title was found
        SectionRole,   // "Titles" or "Messages"
        MessageIdRole, // text; empty when the title was found
    };

    // Enough for a person to look through; a longer query finds what is beyond.
    static constexpr std::size_t maxRows = 200;

    // All outlive it, and what it has begun ends with `work`.
    HistorySearchModel(ConversationRepository &repository, Clock &clock, Work &work,
                       QObject *parent = nullptr);

    [[nodiscard]] const QString &query() const { return m_query; }
    void setQuery(const QString &query);
    [[nodiscard]] bool isActive() const { return !m_query.trimmed().isEmpty(); }
    [[nodiscard]] bool isSearching() const { return m_isSearching; }

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    // A chat was renamed or is gone: the rows follow.
    void refresh();

Q_SIGNALS:
    void queryChanged();
    void isSearchingChanged();
    void countChanged();

private:
    struct Row {
        QUuid id;
        QString title;
        QString excerpt;
        QUuid message; // null when the title was found
    };
    using Titles = QHash<QUuid, QString>;

    static QCoro::Task<> search(QPointer<HistorySearchModel> self, SearchTerms terms, std::stop_token stop);
    static QCoro::Task<Titles> searchTitles(QPointer<HistorySearchModel> self, SearchTerms terms,
                                            std::stop_token stop);
    static QCoro::Task<> searchMessages(QPointer<HistorySearchModel> self, SearchTerms terms, Titles titles,
                                        std::stop_token stop);

    [[nodiscard]] int countNow() const { return rowCount(); }
    [[nodiscard]] bool isFull() const { return m_rows.size() >= maxRows; }
    void append(Row row);
    void clear();
    void setSearching(bool searching);

    ConversationRepository &m_repository;
    Clock &m_clock;
    Work &m_work;
    QString m_query;
    std::vector<Row> m_rows;
    bool m_isSearching = false;
    TaskHandle m_search;
};

} // namespace morvane
