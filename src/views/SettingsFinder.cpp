#include "views/SettingsFinder.h"

#include "view_models/sidebar/SearchTerms.h"

#include <algorithm>

namespace morvane {

namespace {

QString textOf(const QQuickItem &item, const char *property)
{
    const QVariant value = item.property(property);
    return value.userType() == QMetaType::QString ? value.toString() : QString();
}

bool isButton(const QQuickItem &item)
{
    return item.property("down").isValid() && !textOf(item, "text").isEmpty();
}

// What the buttons in it say.
void appendButtons(const QQuickItem &item, QString &words)
{
    for (const QQuickItem *child : item.childItems()) {
        if (isButton(*child))
            words += u' ' + textOf(*child, "text");
        appendButtons(*child, words);
    }
}

QString titleOf(const QQuickItem &item)
{
    for (const char *property : {"title", "heading"}) {
        if (const QString title = textOf(item, property); !title.isEmpty())
            return title;
    }
    if (item.property("description").isValid()) // of an ability
        return textOf(item, "name");
    return isButton(item) ? textOf(item, "text") : QString();
}

} // namespace

void SettingsFinder::setQuery(const QString &query)
{
    if (m_query == query.left(longestQuery))
        return;
    m_query = query.left(longestQuery);
    Q_EMIT queryChanged();
    look();
    Q_EMIT found();
}

// Once this moment's changes are all in.
void SettingsFinder::lookSoon()
{
    if (m_isStale || m_query.isEmpty())
        return;
    m_isStale = true;
    const auto again = [this] {
        m_isStale = false;
        const std::vector<Entry> before = m_found;
        look();
        if (m_found != before)
            Q_EMIT found();
    };
    QMetaObject::invokeMethod(this, again, Qt::QueuedConnection);
}

void SettingsFinder::look()
{
    const SearchTerms terms(m_query);
    std::vector<Entry> entries;
    if (m_pages && !terms.isEmpty()) {
        int number = 0;
        for (QQuickItem *page : m_pages->childItems()) {
            const QString title = textOf(*page, "title");
            collect(*page, {title, title, title, number++, page}, entries);
        }
    }
    std::erase_if(entries, [&](const Entry &entry) { return !terms.match(entry.words); });
    const auto hasItsName = [&](const Entry &entry) { return terms.match(entry.title); };
    const auto rows = std::ranges::stable_partition(entries, hasItsName).begin();
    std::stable_partition(entries.begin(), rows,
                          [](const Entry &entry) { return entry.title == entry.pageTitle; });
    if (entries.size() > mostFound)
        entries.resize(mostFound);
    if (entries == m_found)
        return;
    beginResetModel();
    m_found = std::move(entries);
    endResetModel();
}

// A row's words include its card's heading, and what stands in a row is part of it.
void SettingsFinder::collect(QQuickItem &item, const Entry &within, std::vector<Entry> &entries)
{
    if (item.inherits("QQuickListView"))
        return;
    connect(&item, &QQuickItem::childrenChanged, this, &SettingsFinder::lookSoon, Qt::UniqueConnection);
    Entry entry = within;
    const QString title = &item == within.item ? within.title : titleOf(item);
    if (!title.isEmpty()) {
        const bool isPart = textOf(item, "heading").isEmpty() && &item != within.item;
        entry.title = title;
        entry.words = (&item == within.item ? QString() : textOf(*within.item, "heading") + u' ') + title +
                      u' ' + textOf(item, "explanation") + u' ' + textOf(item, "description") + u' ' +
                      textOf(item, "keywords");
        entry.item = &item;
        if (isPart)
            appendButtons(item, entry.words);
        const bool isKnown = std::ranges::any_of(entries, [&](const Entry &other) {
            return other.title == entry.title && other.page == entry.page;
        });
        if (!isKnown)
            entries.push_back(entry);
        if (isPart)
            return;
    }
    for (QQuickItem *child : item.childItems())
        collect(*child, entry, entries);
}

int SettingsFinder::page(int row) const
{
    return row >= 0 && row < count() ? m_found[static_cast<std::size_t>(row)].page : -1;
}

QQuickItem *SettingsFinder::item(int row) const
{
    return row >= 0 && row < count() ? m_found[static_cast<std::size_t>(row)].item.data() : nullptr;
}

int SettingsFinder::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant SettingsFinder::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Entry &entry = m_found[static_cast<std::size_t>(index.row())];
    return role == Title ? entry.title : role == PageTitle ? entry.pageTitle : QVariant();
}

QHash<int, QByteArray> SettingsFinder::roleNames() const
{
    return {{Title, "title"}, {PageTitle, "pageTitle"}};
}

} // namespace morvane
