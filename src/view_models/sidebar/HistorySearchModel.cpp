#include "view_models/sidebar/HistorySearchModel.h"

#include "async/CancelledError.h"
#include "async/Clock.h"
#include "async/Work.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "utils/text/Identifier.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// A word that is typed quickly makes one search.
constexpr auto typingPause = 120ms;

// As many as are read between two frames.
constexpr std::int64_t portion = 250;

struct Hit {
    QUuid conversation;
    QUuid message;
    QString excerpt;
};

std::vector<Hit> hitsIn(const std::vector<SealedText> &texts, const SearchTerms &terms,
                        const FieldSealing &sealing)
{
    std::vector<Hit> hits;
    for (const SealedText &text : texts) {
        const QString content = sealing.open(text.sealedContent);
        if (terms.match(content))
            hits.push_back({text.conversation, text.message, terms.excerpt(content)});
    }
    return hits;
}

} // namespace

HistorySearchModel::HistorySearchModel(ConversationRepository &repository, Clock &clock, Work &work,
                                       QObject *parent)
    : QAbstractListModel(parent)
    , m_repository(repository)
    , m_clock(clock)
    , m_work(work)
{}

void HistorySearchModel::setQuery(const QString &query)
{
    if (m_query == query)
        return;
    const bool sameWords = SearchTerms(m_query) == SearchTerms(query);
    m_query = query;
    Q_EMIT queryChanged();
    if (sameWords)
        return;
    const SearchTerms terms(query);
    setSearching(!terms.isEmpty());
    m_search = {};
    if (terms.isEmpty()) {
        clear();
        return;
    }
    m_search = TaskHandle::start(
        [this, &terms](std::stop_token stop) { return search(QPointer(this), terms, std::move(stop)); });
}

QCoro::Task<> HistorySearchModel::search(QPointer<HistorySearchModel> self, SearchTerms terms,
                                         std::stop_token stop)
{
    co_await pause(self->m_clock, typingPause, stop);
    throwIfStopped(stop);
    self->clear();
    Titles titles = co_await searchTitles(self, terms, stop);
    throwIfStopped(stop);
    co_await searchMessages(self, terms, std::move(titles), stop);
    throwIfStopped(stop);
    self->setSearching(false);
}

QCoro::Task<HistorySearchModel::Titles>
HistorySearchModel::searchTitles(QPointer<HistorySearchModel> self, SearchTerms terms, std::stop_token stop)
{
    Titles titles;
    for (std::int64_t offset = 0;; offset += portion) {
        const auto page = self->m_repository.page(offset, portion);
        for (const auto &conversation : page) {
            const QString title = conversation->title();
            titles.insert(conversation->id(), title);
            if (terms.match(title))
                self->append({conversation->id(), title, {}, {}});
        }
        if (std::ssize(page) < portion)
            break;
        const auto nothing = [] {};
        co_await self->m_work.run(nothing, stop); // lets the window draw
        throwIfStopped(stop);
    }
    co_return titles;
}

QCoro::Task<> HistorySearchModel::searchMessages(QPointer<HistorySearchModel> self, SearchTerms terms,
                                                 Titles titles, std::stop_token stop)
{
    const auto sealing = self->m_repository.context().sealing();
    auto texts = self->m_repository.sealedTexts(portion);
    while (!texts.empty() && !self->isFull()) {
        const std::int64_t last = texts.back().position;
        const auto look = [texts = std::move(texts), terms, sealing] {
            return hitsIn(texts, terms, *sealing);
        };
        const std::vector<Hit> hits = co_await self->m_work.run(look, stop);
        throwIfStopped(stop);
        for (const Hit &hit : hits) {
            const auto title = titles.constFind(hit.conversation);
            if (title != titles.cend())
                self->append({hit.conversation, *title, hit.excerpt, hit.message});
        }
        texts = self->m_repository.sealedTexts(portion, last);
    }
}

void HistorySearchModel::append(Row row)
{
    const bool isThere =
        std::any_of(m_rows.begin(), m_rows.end(), [&row](const Row &other) { return other.id == row.id; });
    if (isThere || isFull() || !m_repository.find(row.id))
        return;
    beginInsertRows({}, rowCount(), rowCount());
    m_rows.push_back(std::move(row));
    endInsertRows();
    Q_EMIT countChanged();
}

void HistorySearchModel::clear()
{
    if (m_rows.empty())
        return;
    beginResetModel();
    m_rows.clear();
    endResetModel();
    Q_EMIT countChanged();
}

void HistorySearchModel::refresh()
{
    for (int row = rowCount() - 1; row >= 0; --row) {
        Row &shown = m_rows[static_cast<std::size_t>(row)];
        if (const auto conversation = m_repository.find(shown.id)) {
            shown.title = conversation->title();
            Q_EMIT dataChanged(index(row), index(row), {TitleRole});
            continue;
        }
        beginRemoveRows({}, row, row);
        m_rows.erase(m_rows.begin() + row);
        endRemoveRows();
        Q_EMIT countChanged();
    }
}

void HistorySearchModel::setSearching(bool searching)
{
    if (m_isSearching == searching)
        return;
    m_isSearching = searching;
    Q_EMIT isSearchingChanged();
}

int HistorySearchModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QHash<int, QByteArray> HistorySearchModel::roleNames() const
{
    return {{ConversationIdRole, "conversationId"},
            {TitleRole, "title"},
            {ExcerptRole, "excerpt"},
            {SectionRole, "section"},
            {MessageIdRole, "messageId"}};
}

QVariant HistorySearchModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Row &row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case ConversationIdRole:
        return Identifier::text(row.id);
    case TitleRole:
        return row.title;
    case ExcerptRole:
        return row.excerpt;
    case SectionRole:
        return row.excerpt.isEmpty() ? u"Titles"_s : u"Messages"_s;
    case MessageIdRole:
        return row.message.isNull() ? QString() : Identifier::text(row.message);
    default:
        return {};
    }
}

} // namespace morvane
