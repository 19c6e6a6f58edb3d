#pragma once

#include <QAbstractListModel>
#include <QPointer>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace morvane {

// Finds what the pages of the settings hold, by the words that stand on them: whatever has a `title` or a
// `heading`, with its `explanation`, its `keywords` and the texts of its buttons, and buttons that stand by
// themselves. Nothing is listed beforehand, so what is added to a page is found. A row that a page doesn't
// show just now is found as well, and one that a page gets only while it is looked for as soon as it is
// there. Rows of tables aren't settings.
class SettingsFinder : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    // Its children are the pages, each with a `title`.
    Q_PROPERTY(QQuickItem *pages MEMBER m_pages REQUIRED)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(int count READ count NOTIFY found)

public:
    static constexpr qsizetype longestQuery = 200; // UTF-16 units; the rest of a longer one is left
    static constexpr std::size_t mostFound = 40;

    enum Role { Title = Qt::UserRole, PageTitle };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] QString query() const { return m_query; }
    void setQuery(const QString &query);
    [[nodiscard]] int count() const { return static_cast<int>(m_found.size()); }

    // Of a row of this model; -1 and null when there is none.
    Q_INVOKABLE int page(int row) const;
    Q_INVOKABLE QQuickItem *item(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void queryChanged(); // before what it finds
    void found();

private:
    struct Entry {
        QString title;
        QString words; // all that it is found by
        QString pageTitle;
        int page;
        QPointer<QQuickItem> item;

        bool operator==(const Entry &) const = default;
    };

    void look();
    void lookSoon();
    void collect(QQuickItem &item, const Entry &within, std::vector<Entry> &entries);

    QPointer<QQuickItem> m_pages;
    QString m_query;
    std::vector<Entry> m_found;
    bool m_isStale = false; // something came or went on a page since
};

} // namespace morvane
