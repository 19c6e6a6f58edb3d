#include "view_models/chat/MessageListModel.h"

#include "async/Clock.h"
#include "attestation/ProofLedger.h"
#include "models/ChatMessage.h"
#include "utils/text/Identifier.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// In the same order, with others between.
bool isPartOf(const std::vector<std::shared_ptr<ChatMessage>> &part,
              const std::vector<std::shared_ptr<ChatMessage>> &whole)
{
    auto next = part.begin();
    for (const auto &message : whole) {
        if (next != part.end() && *next == message)
            ++next;
    }
    return next == part.end();
}

} // namespace

// What was read out of a record, valid for one revision of it.
struct MessageListModel::Opened {
    std::uint64_t revision = 0;
    QString text;
    QString error;
    QString attachmentName;
    QStringList toolLines;
    QStringList toolStates;
};

MessageListModel::MessageListModel(Clock &clock, QObject *parent)
    : QAbstractListModel(parent)
    , m_clock(clock)
{}

MessageListModel::~MessageListModel() = default;

int MessageListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_messages.size());
}

QHash<int, QByteArray> MessageListModel::roleNames() const
{
    return {{MessageIdRole, "messageId"},
            {IsUserRole, "isUser"},
            {TextRole, "text"},
            {FailedRole, "failed"},
            {CancelledRole, "cancelled"},
            {InterruptedRole, "interrupted"},
            {RunningRole, "running"},
            {IndicatorTextRole, "indicatorText"},
            {ErrorTextRole, "errorText"},
            {ToolLinesRole, "toolLines"},
            {ToolStatesRole, "toolStates"},
            {SourceDomainsRole, "sources"},
            {AttachmentNameRole, "attachmentName"},
            {CanContinueRole, "canContinue"},
            {PlaceRole, "place"}};
}

const MessageListModel::Opened &MessageListModel::opened(const ChatMessage &message) const
{
    const auto found = m_opened.find(message.id());
    if (found != m_opened.end() && found->second.revision == message.revision())
        return found->second;
    Opened fresh{.revision = message.revision(),
                 .text = message.content(),
                 .error = message.errorMessage().value_or(QString()),
                 .attachmentName = message.attachmentName().value_or(QString()),
                 .toolLines = message.toolSummary().value_or(QString()).split(u'\n', Qt::SkipEmptyParts),
                 .toolStates = message.toolStates()};
    return m_opened.insert_or_assign(message.id(), std::move(fresh)).first->second;
}

QString MessageListModel::textOf(const ChatMessage &message) const
{
    return opened(message).text;
}

bool MessageListModel::isRunning(const ChatMessage &message) const
{
    const auto *indicating = indicator(message.id());
    return indicating && indicating->isRunning();
}

bool MessageListModel::isInterrupted(const ChatMessage &message) const
{
    const bool unfinished =
        message.status() == MessageStatus::pending || message.status() == MessageStatus::streaming;
    return unfinished && !isRunning(message);
}

QVariant MessageListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ChatMessage &message = *m_messages[static_cast<std::size_t>(index.row())];
    switch (role) {
    case MessageIdRole:
        return Identifier::text(message.id());
    case IsUserRole:
        return message.role() == MessageRole::user;
    case TextRole:
        return opened(message).text;
    case FailedRole:
        return message.status() == MessageStatus::failed;
    case CancelledRole:
        return message.status() == MessageStatus::cancelled;
    case InterruptedRole:
        return isInterrupted(message);
    case RunningRole:
        return isRunning(message);
    case IndicatorTextRole: {
        const auto *indicating = indicator(message.id());
        return indicating ? indicating->label(m_clock.now()) : QString();
    }
    case ErrorTextRole:
        return opened(message).error;
    case ToolLinesRole:
        return opened(message).toolLines;
    case ToolStatesRole:
        return opened(message).toolStates;
    case SourceDomainsRole:
        return message.sourceDomains().value_or(QStringList());
    case AttachmentNameRole:
        return opened(message).attachmentName;
    case CanContinueRole:
        return message.hitTokenLimit() && !m_responding;
    case PlaceRole:
        return placeNameOfCode(message.placeRaw().value_or(QString())).value_or(QString());
    default:
        return {};
    }
}

void MessageListModel::setMessages(Messages messages)
{
    const std::size_t common = std::min(messages.size(), m_messages.size());
    const bool grows = std::equal(messages.begin(), messages.begin() + static_cast<std::ptrdiff_t>(common),
                                  m_messages.begin()) &&
                       messages.size() >= m_messages.size();
    if (grows && messages.size() == m_messages.size())
        return;
    if (!grows && !messages.empty() && isPartOf(messages, m_messages)) {
        keepOnly(messages);
        Q_EMIT countChanged();
        return;
    }
    if (grows) {
        beginInsertRows({}, static_cast<int>(common), static_cast<int>(messages.size()) - 1);
        m_messages = std::move(messages);
        endInsertRows();
    } else {
        beginResetModel();
        m_opened.clear();
        m_messages = std::move(messages);
        endResetModel();
    }
    Q_EMIT countChanged();
}

void MessageListModel::keepOnly(const Messages &messages)
{
    auto kept = messages.rbegin();
    for (int row = rowCount() - 1; row >= 0; --row) {
        const auto message = m_messages.begin() + row;
        if (kept != messages.rend() && *kept == *message) {
            ++kept;
            continue;
        }
        beginRemoveRows({}, row, row);
        m_messages.erase(message);
        endRemoveRows();
    }
}

void MessageListModel::messageChanged(const QUuid &id)
{
    rowChanged(rowOf(id));
}

void MessageListModel::setResponding(bool responding)
{
    if (m_responding == responding)
        return;
    m_responding = responding;
    for (int row = 0; row < rowCount(); ++row) {
        if (m_messages[static_cast<std::size_t>(row)]->hitTokenLimit())
            rowChanged(row, {CanContinueRole});
    }
}

void MessageListModel::beginIndicator(const QUuid &id)
{
    m_indicators.insert_or_assign(id, ReplyIndicator(m_clock.now()));
    rowChanged(rowOf(id), {RunningRole, InterruptedRole, IndicatorTextRole});
    tick();
}

void MessageListModel::signalIndicator(const QUuid &id, const ReplyIndicator::Signal &signal)
{
    const auto found = m_indicators.find(id);
    if (found == m_indicators.end() || !found->second.apply(signal))
        return;
    rowChanged(rowOf(id), {RunningRole, InterruptedRole, IndicatorTextRole});
    tick();
}

const ReplyIndicator *MessageListModel::indicator(const QUuid &id) const
{
    const auto found = m_indicators.find(id);
    return found == m_indicators.end() ? nullptr : &found->second;
}

int MessageListModel::rowOf(const QUuid &id) const
{
    // The message that changes is nearly always the last one.
    const auto found = std::find_if(m_messages.rbegin(), m_messages.rend(),
                                    [&id](const auto &message) { return message->id() == id; });
    return found == m_messages.rend() ? -1 : static_cast<int>(std::distance(found, m_messages.rend())) - 1;
}

void MessageListModel::rowChanged(int row, const QList<int> &roles)
{
    if (row >= 0)
        Q_EMIT dataChanged(index(row), index(row), roles);
}

// Seconds are shown while a reply is waited for: a whole second after another, and none when nothing waits.
void MessageListModel::tick()
{
    m_ticker.reset();
    bool waits = false;
    for (const auto &[id, indicator] : m_indicators) {
        if (!indicator.isRunning() || std::holds_alternative<ReplyIndicator::Streaming>(indicator.state()))
            continue;
        waits = true;
        rowChanged(rowOf(id), {IndicatorTextRole});
    }
    if (waits)
        m_ticker = m_clock.after(std::chrono::seconds(1), [this] { tick(); });
}

} // namespace morvane
