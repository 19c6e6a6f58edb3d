#include "view_models/find/FindViewModel.h"

#include "async/CancelledError.h"
#include "async/Clock.h"
#include "async/Work.h"
#include "markdown/BlockReader.h"
#include "models/ChatMessage.h"
#include "persistence/ConversationRepository.h"
#include "utils/text/Identifier.h"
#include "view_models/chat/MessageListModel.h"
#include "view_models/find/ShownText.h"

#include <algorithm>
#include <numeric>

namespace morvane {

using namespace std::chrono_literals;

namespace {

// A word that is typed quickly makes one search, and a reply that grows is read again as rarely.
constexpr auto typingPause = 120ms;

// What is handed to the worker at once, so that the first finds show soon.
constexpr std::size_t mostMessages = 64;
constexpr qsizetype mostSealedText = 200'000;

struct Sealed {
    QUuid message;
    std::uint64_t revision = 0;
    bool isUser = false;
    QString content;
};

int findsIn(const QStringList &texts, const FindTerms &terms)
{
    return std::accumulate(texts.begin(), texts.end(), 0, [&terms](int sum, const QString &text) {
        return sum + static_cast<int>(terms.in(text).size());
    });
}

std::vector<int> findsIn(const QString &content, bool isUser, const FindTerms &terms)
{
    if (isUser)
        return {findsIn(ShownText::of(content), terms)};
    std::vector<int> counts;
    const auto blocks = BlockReader::read(content);
    for (const auto &block : blocks)
        counts.push_back(findsIn(ShownText::of(block), terms));
    return counts;
}

} // namespace

struct FindViewModel::Portion {
    std::vector<Sealed> messages;
};

FindViewModel::FindViewModel(MessageListModel &messages, ConversationRepository &repository, Clock &clock,
                             Work &work, QObject *parent)
    : QObject(parent)
    , m_messages(messages)
    , m_repository(repository)
    , m_clock(clock)
    , m_work(work)
{
    connect(&messages, &QAbstractItemModel::modelReset, this, &FindViewModel::close);
    connect(&messages, &QAbstractItemModel::rowsInserted, this, &FindViewModel::searchOn);
    connect(&messages, &QAbstractItemModel::rowsRemoved, this, &FindViewModel::followCurrent);
    connect(&messages, &QAbstractItemModel::dataChanged, this, &FindViewModel::searchOn);
}

void FindViewModel::open(int row)
{
    const bool wasOpen = std::exchange(m_isOpen, true);
    if (!wasOpen) {
        Q_EMIT isOpenChanged();
        Q_EMIT termsChanged();
        start(row);
    }
    Q_EMIT opened();
}

void FindViewModel::openAt(const QString &query, const QString &messageId)
{
    const auto &messages = m_messages.messages();
    const auto found = std::find_if(messages.begin(), messages.end(), [&](const auto &message) {
        return Identifier::text(message->id()) == messageId;
    });
    const bool wasOpen = std::exchange(m_isOpen, true);
    m_query = query;
    m_terms = FindTerms(query, FindTerms::Way::words);
    if (!wasOpen)
        Q_EMIT isOpenChanged();
    Q_EMIT queryChanged();
    Q_EMIT termsChanged();
    start(found == messages.end() ? 0 : static_cast<int>(found - messages.begin()));
    Q_EMIT opened();
}

bool FindViewModel::close()
{
    if (!m_isOpen)
        return false;
    m_isOpen = false;
    m_search = {};
    m_counted.clear();
    m_isSearching = false;
    setCurrent({});
    Q_EMIT changed();
    Q_EMIT termsChanged();
    Q_EMIT isOpenChanged();
    return true;
}

void FindViewModel::setQuery(const QString &query)
{
    if (m_query == query)
        return;
    m_query = query;
    Q_EMIT queryChanged();
    const FindTerms terms(query);
    if (terms == m_terms)
        return;
    m_terms = terms;
    Q_EMIT termsChanged();
    if (m_isOpen)
        start(m_current.row < 0 ? m_from : m_current.row);
}

void FindViewModel::start(int row)
{
    m_counted.clear();
    m_search = {};
    m_from = std::clamp(row, 0, std::max(0, rowCount() - 1));
    m_isSearching = !m_terms.isEmpty();
    setCurrent({});
    Q_EMIT changed();
    searchOn();
}

// Reads what isn't read yet, unless that goes on already.
void FindViewModel::searchOn()
{
    if (!m_isOpen || m_terms.isEmpty() || m_search.isRunning() || nextPortion().messages.empty())
        return;
    m_search =
        TaskHandle::start([this](std::stop_token stop) { return search(QPointer(this), std::move(stop)); });
}

QCoro::Task<> FindViewModel::search(QPointer<FindViewModel> self, std::stop_token stop)
{
    co_await pause(self->m_clock, typingPause, stop);
    throwIfStopped(stop);
    const auto sealing = self->m_repository.context().sealing();
    Portion portion = self->nextPortion();
    while (!portion.messages.empty()) {
        const auto look = [messages = portion.messages, terms = self->m_terms, sealing] {
            std::vector<std::vector<int>> counts;
            counts.reserve(messages.size());
            for (const Sealed &sealed : messages)
                counts.push_back(findsIn(sealing->open(sealed.content), sealed.isUser, terms));
            return counts;
        };
        const std::vector<std::vector<int>> counts = co_await self->m_work.run(look, stop);
        throwIfStopped(stop);
        for (std::size_t i = 0; i < counts.size(); ++i)
            self->m_counted.insert(portion.messages[i].message,
                                   {portion.messages[i].revision, counts[i],
                                    std::accumulate(counts[i].begin(), counts[i].end(), 0)});
        self->followCurrent();
        self->pick(false);
        portion = self->nextPortion();
    }
    self->m_isSearching = false;
    self->pick(true);
}

bool FindViewModel::isCounted(const ChatMessage &message) const
{
    const auto found = m_counted.constFind(message.id());
    return found != m_counted.cend() && found->revision == message.revision();
}

// From the row where the search begins, and then from the first one.
FindViewModel::Portion FindViewModel::nextPortion() const
{
    Portion portion;
    qsizetype size = 0;
    for (int i = 0; i < rowCount(); ++i) {
        const ChatMessage &message =
            *m_messages.messages()[static_cast<std::size_t>((m_from + i) % rowCount())];
        if (isCounted(message))
            continue;
        portion.messages.push_back(
            {message.id(), message.revision(), message.role() == MessageRole::user, message.sealedContent()});
        size += message.sealedContent().size();
        if (portion.messages.size() >= mostMessages || size >= mostSealedText)
            break;
    }
    return portion;
}

int FindViewModel::rowCount() const
{
    return static_cast<int>(m_messages.messages().size());
}

const FindViewModel::Counted *FindViewModel::countedAt(int row) const
{
    const auto found = m_counted.constFind(m_messages.messages()[static_cast<std::size_t>(row)]->id());
    return found == m_counted.cend() ? nullptr : &*found;
}

int FindViewModel::count() const
{
    int sum = 0;
    for (int row = 0; row < rowCount(); ++row) {
        const Counted *counted = countedAt(row);
        sum += counted ? counted->total : 0;
    }
    return sum;
}

int FindViewModel::position() const
{
    int sum = 0;
    for (int row = 0; row < m_current.row; ++row) {
        const Counted *counted = countedAt(row);
        sum += counted ? counted->total : 0;
    }
    return m_current.row < 0 ? 0 : sum + numberOf(m_current) + 1;
}

std::optional<FindPlace> FindViewModel::placeIn(int row, int number) const
{
    const Counted *counted = countedAt(row);
    if (!counted || number < 0 || number >= counted->total)
        return std::nullopt;
    int block = 0;
    for (; number >= counted->blocks[static_cast<std::size_t>(block)]; ++block)
        number -= counted->blocks[static_cast<std::size_t>(block)];
    return FindPlace{row, block, number};
}

int FindViewModel::numberOf(const FindPlace &place) const
{
    const Counted *counted = countedAt(place.row);
    const auto block = std::min<std::ptrdiff_t>(place.block, counted ? std::ssize(counted->blocks) : 0);
    return counted ? std::accumulate(counted->blocks.begin(), counted->blocks.begin() + block, place.ordinal)
                   : place.ordinal;
}

// The first find from the row on where the search began, once all that stands before it is read.
void FindViewModel::pick(bool isComplete)
{
    for (int i = 0; i < rowCount() && m_current.row < 0; ++i) {
        const int row = (m_from + i) % rowCount();
        if (!countedAt(row) && !isComplete)
            break;
        if (const auto place = placeIn(row, 0))
            setCurrent(*place);
    }
    Q_EMIT changed();
}

void FindViewModel::step(int direction)
{
    if (m_current.row < 0 || rowCount() == 0)
        return;
    const int number = numberOf(m_current) + direction;
    auto place = placeIn(m_current.row, number);
    for (int i = 1; i <= rowCount() && !place; ++i) {
        const int row = (m_current.row + direction * i + rowCount() * (i / rowCount() + 1)) % rowCount();
        const Counted *counted = countedAt(row);
        place = placeIn(row, direction > 0 || !counted ? 0 : counted->total - 1);
    }
    if (place)
        setCurrent(*place);
    Q_EMIT changed();
}

void FindViewModel::setCurrent(const FindPlace &place)
{
    m_currentMessage =
        place.row < 0 ? QUuid() : m_messages.messages()[static_cast<std::size_t>(place.row)]->id();
    if (m_current == place)
        return;
    m_current = place;
    Q_EMIT currentChanged();
}

// Rows went, or the message of the current find has changed: it may stand elsewhere, or be gone.
void FindViewModel::followCurrent()
{
    if (m_current.row < 0)
        return;
    const auto &messages = m_messages.messages();
    const auto found = std::find_if(messages.begin(), messages.end(), [this](const auto &message) {
        return message->id() == m_currentMessage;
    });
    FindPlace place = m_current;
    place.row = found == messages.end() ? -1 : static_cast<int>(found - messages.begin());
    const Counted *counted = place.row < 0 ? nullptr : countedAt(place.row);
    const bool isThere = counted && place.block < std::ssize(counted->blocks) &&
                         place.ordinal < counted->blocks[static_cast<std::size_t>(place.block)];
    m_from = std::min(std::max(0, m_current.row), std::max(0, rowCount() - 1));
    setCurrent(isThere ? place : FindPlace{});
    if (!isThere)
        pick(true);
    Q_EMIT changed();
}

} // namespace morvane
