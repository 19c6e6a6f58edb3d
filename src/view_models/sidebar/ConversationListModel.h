#pragma once

#include <QAbstractListModel>
#include <QDateTime>
#include <QString>
#include <QUuid>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace morvane {

class Clock;
class ConversationRepository;

// The saved chats, newest first, for the sidebar. Read by the page as the list is scrolled, so that a store
// of many chats opens as fast as one of few.
class ConversationListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(int count READ rowCountNow NOTIFY countChanged)

public:
    enum Role {
        ConversationIdRole = Qt::UserRole + 1, // text, for ChatViewModel::open
        TitleRole,                             // one line
        SectionRole,                           // "Today", "Yesterday", "Last 7 Days" or a month
    };

    ConversationListModel(ConversationRepository &repository, Clock &clock, QObject *parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;
    [[nodiscard]] bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;

    // The chat that many rows below the one of this id, above it when negative. Empty where the list ends;
    // the first one when the id isn't listed.
    Q_INVOKABLE QString neighbour(const QString &id, int step);

    // Lets go of all titles, until refresh().
    void conceal();
    // Reads the list again; rows that stay are moved and updated in place.
    void refresh();

Q_SIGNALS:
    void countChanged();

private:
    struct Row {
        QUuid id;
        QString title;
        QDateTime updatedAt;
        bool operator==(const Row &) const = default;
    };

    [[nodiscard]] int rowCountNow() const { return rowCount(); }
    [[nodiscard]] std::vector<Row> read(std::size_t offset, std::size_t count) const;

    ConversationRepository &m_repository;
    Clock &m_clock;
    std::vector<Row> m_rows;
    bool m_hasMore;
};

} // namespace morvane
