#include "view_models/sidebar/ConversationListModel.h"

#include "async/Clock.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "utils/text/Identifier.h"

#include <QLocale>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t pageSize = 60;

QString sectionOf(const QDateTime &date, const QDateTime &now)
{
    const QDate day = date.toLocalTime().date();
    const QDate today = now.toLocalTime().date();
    if (day >= today)
        return u"Today"_s;
    if (day == today.addDays(-1))
        return u"Yesterday"_s;
    if (day > today.addDays(-7))
        return u"Last 7 Days"_s;
    return QLocale(QLocale::English).toString(day, u"MMMM yyyy"_s);
}

} // namespace

ConversationListModel::ConversationListModel(ConversationRepository &repository, Clock &clock,
                                             QObject *parent)
    : QAbstractListModel(parent)
    , m_repository(repository)
    , m_clock(clock)
    , m_rows(read(0, pageSize))
    , m_hasMore(m_rows.size() == pageSize)
{}

int ConversationListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QHash<int, QByteArray> ConversationListModel::roleNames() const
{
    return {{ConversationIdRole, "conversationId"}, {TitleRole, "title"}, {SectionRole, "section"}};
}

QVariant ConversationListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Row &row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case ConversationIdRole:
        return Identifier::text(row.id);
    case TitleRole:
        return row.title;
    case SectionRole:
        return sectionOf(row.updatedAt, m_clock.now());
    default:
        return {};
    }
}

bool ConversationListModel::canFetchMore(const QModelIndex &parent) const
{
    return !parent.isValid() && m_hasMore;
}

void ConversationListModel::fetchMore(const QModelIndex &)
{
    const auto more = read(m_rows.size(), pageSize);
    m_hasMore = more.size() == pageSize;
    if (more.empty())
        return;
    beginInsertRows({}, rowCount(), rowCount() + static_cast<int>(more.size()) - 1);
    m_rows.insert(m_rows.end(), more.begin(), more.end());
    endInsertRows();
    Q_EMIT countChanged();
}

std::vector<ConversationListModel::Row> ConversationListModel::read(std::size_t offset,
                                                                    std::size_t count) const
{
    std::vector<Row> rows;
    const auto page = m_repository.page(static_cast<std::int64_t>(offset), static_cast<std::int64_t>(count));
    rows.reserve(page.size());
    for (const auto &conversation : page)
        rows.push_back({conversation->id(), conversation->title(), conversation->updatedAt()});
    return rows;
}

QString ConversationListModel::neighbour(const QString &id, int step)
{
    const QUuid uuid = QUuid::fromString(id);
    const auto here =
        std::find_if(m_rows.begin(), m_rows.end(), [&](const Row &row) { return row.id == uuid; });
    const auto row = here == m_rows.end() ? 0 : std::distance(m_rows.begin(), here) + step;
    if (row >= std::ssize(m_rows) && canFetchMore({}))
        fetchMore({});
    return row < 0 || row >= std::ssize(m_rows) ? QString()
                                                : Identifier::text(m_rows[static_cast<std::size_t>(row)].id);
}

void ConversationListModel::conceal()
{
    beginResetModel();
    m_rows.clear();
    m_hasMore = false;
    endResetModel();
    Q_EMIT countChanged();
}

void ConversationListModel::refresh()
{
    // One more than is shown: a new chat joins the list, and a full page tells that there are more.
    const std::size_t wanted = std::max(pageSize, m_rows.size() + 1);
    auto rows = read(0, wanted);
    m_hasMore = rows.size() == wanted;
    if (rows == m_rows)
        return;
    const bool sameOrder = std::equal(rows.begin(), rows.end(), m_rows.begin(), m_rows.end(),
                                      [](const Row &a, const Row &b) { return a.id == b.id; });
    if (sameOrder) {
        m_rows = std::move(rows);
        Q_EMIT dataChanged(index(0), index(rowCount() - 1));
        return;
    }
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
    Q_EMIT countChanged();
}

} // namespace morvane
