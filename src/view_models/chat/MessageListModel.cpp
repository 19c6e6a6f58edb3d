#include "view_models/chat/MessageListModel.h"

#include "async/Clock.h"
#include "markdown/BlockSource.h"
#include "markdown/MarkdownRenderer.h"
#include "models/ChatMessage.h"
#include "models/Conversation.h"
#include "models/MessageVersions.h"
#include "utils/text/Identifier.h"
#include "view_models/blocks/BlockContent.h"
#include "view_models/chat/ThoughtTimer.h"

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

// The versions of a message, itself among them.
std::vector<std::shared_ptr<ChatMessage>> versionsOf(const ChatMessage &message)
{
    const auto conversation = message.versionGroup() ? message.conversation() : nullptr;
    return conversation ? MessageVersions::of(*conversation, message) : Conversation::Messages();
}

int versionNumber(const ChatMessage &message)
{
    const auto versions = versionsOf(message);
    const auto found = std::ranges::find(versions, message.id(), &ChatMessage::id);
    return found == versions.end() ? 1 : static_cast<int>(found - versions.begin()) + 1;
}

} // namespace

MessageListModel::MessageListModel(Clock &clock, const AnswerProofs &proofs, QObject *parent)
    : QAbstractListModel(parent)
    , m_clock(clock)
    , m_proofs(proofs)
{
    connect(&proofs, &AnswerProofs::changed, this, [this](const QUuid &answer) {
        rowChanged(rowOf(answer), {PlaceRole, ProofMarkRole});
    });
}

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
            {ThinkingRole, "thinking"},
            {ThinkingLabelRole, "thinkingLabel"},
            {FailedRole, "failed"},
            {CancelledRole, "cancelled"},
            {InterruptedRole, "interrupted"},
            {RunningRole, "running"},
            {IndicatorTextRole, "indicatorText"},
            {StalledRole, "stalled"},
            {ErrorTextRole, "errorText"},
            {ToolLinesRole, "toolLines"},
            {ToolStatesRole, "toolStates"},
            {SourceDomainsRole, "sources"},
            {AttachmentNameRole, "attachmentName"},
            {CanContinueRole, "canContinue"},
            {PlaceRole, "place"},
            {ProofMarkRole, "proofMark"},
            {VersionRole, "version"},
            {VersionCountRole, "versionCount"}};
}

QString MessageListModel::textOf(const ChatMessage &message) const
{
    return m_opened.of(message).text;
}

QString MessageListModel::plainTextOf(const ChatMessage &message) const
{
    const QString text = textOf(message);
    return message.role() == MessageRole::user ? text
                                               : BlockContent::plainText(MarkdownRenderer::parse(text));
}

QString MessageListModel::plainText(const QString &messageId) const
{
    const int row = rowOf(QUuid(messageId));
    return row < 0 ? QString() : plainTextOf(*m_messages[static_cast<std::size_t>(row)]);
}

QString MessageListModel::markdown(const QString &messageId) const
{
    const int row = rowOf(QUuid(messageId));
    return row < 0 ? QString() : textOf(*m_messages[static_cast<std::size_t>(row)]);
}

QString MessageListModel::markdown(const QString &messageId, qsizetype firstBlock, qsizetype lastBlock) const
{
    return BlockSource::of(markdown(messageId), firstBlock, lastBlock);
}

QString MessageListModel::wholeMarkdown() const
{
    QStringList texts;
    for (const auto &message : m_messages)
        texts.append(textOf(*message));
    texts.removeAll(QString());
    return texts.join(u"\n\n"_s);
}

QString MessageListModel::wholeText() const
{
    QStringList texts;
    for (const auto &message : m_messages)
        texts.append(plainTextOf(*message));
    texts.removeAll(QString());
    return texts.join(u"\n\n"_s);
}

ToolLineDetail MessageListModel::toolDetail(const QString &messageId, int line) const
{
    const int row = rowOf(QUuid(messageId));
    if (row < 0)
        return {};
    const auto details = m_messages[static_cast<std::size_t>(row)]->toolDetails();
    const ToolDetail detail = details.value(line);
    return {detail.sent, detail.received, detail.isFromOutside};
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
        return m_opened.of(message).text;
    case ThinkingRole:
        return m_opened.of(message).thinking;
    case ThinkingLabelRole: {
        const auto known = m_thought.find(message.id());
        return ThoughtTimer::words(known == m_thought.end() ? std::nullopt : std::optional(known->second));
    }
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
    case StalledRole: {
        const auto *indicating = indicator(message.id());
        return indicating && indicating->isStalled(m_clock.now());
    }
    case ErrorTextRole:
        return m_opened.of(message).error;
    case ToolLinesRole:
        return m_opened.of(message).toolLines;
    case ToolStatesRole:
        return m_opened.of(message).toolStates;
    case SourceDomainsRole:
        return message.sourceDomains().value_or(QStringList());
    case AttachmentNameRole:
        return m_opened.of(message).attachmentName;
    case CanContinueRole:
        return message.hitTokenLimit() && !m_responding;
    case PlaceRole:
        return m_proofs.line(message, isRunning(message)).words;
    case ProofMarkRole:
        return m_proofs.line(message, isRunning(message)).code();
    case VersionRole:
        return versionNumber(message);
    case VersionCountRole:
        return std::max(1, static_cast<int>(versionsOf(message).size()));
    default:
        return {};
    }
}

void MessageListModel::setMessages(Messages messages)
{
    if (messages == m_messages)
        return;
    take(std::move(messages));
    findLastQuestion();
    Q_EMIT countChanged();
}

void MessageListModel::take(Messages messages)
{
    const bool isSwitch =
        !m_messages.empty() &&
        (messages.empty() || messages.front()->conversationID() != m_messages.front()->conversationID());
    if (isSwitch)
        reset(std::move(messages));
    else if (isPartOf(messages, m_messages))
        keepOnly(messages);
    else
        replaceRows(std::move(messages));
}

void MessageListModel::reset(Messages messages)
{
    beginResetModel();
    m_opened.forget();
    m_messages = std::move(messages);
    endResetModel();
}

// The rows between those that stay at the beginning and at the end.
void MessageListModel::replaceRows(Messages messages)
{
    const auto begin = std::ranges::mismatch(messages, m_messages).in1 - messages.begin();
    const auto most = std::min(std::ssize(messages), std::ssize(m_messages)) - begin;
    const auto isSame = std::mismatch(messages.rbegin(), messages.rbegin() + most, m_messages.rbegin());
    const auto end = isSame.first - messages.rbegin();
    const auto surplus = std::ssize(m_messages) - std::ssize(messages);
    const auto changed = std::ssize(messages) - begin - end + std::min(surplus, std::ptrdiff_t(0));
    const auto first = static_cast<int>(begin + changed); // of the rows that come or go
    if (surplus > 0)
        beginRemoveRows({}, first, first + static_cast<int>(surplus) - 1);
    else if (surplus < 0)
        beginInsertRows({}, first, first - static_cast<int>(surplus) - 1);
    m_messages = std::move(messages);
    if (surplus > 0)
        endRemoveRows();
    else if (surplus < 0)
        endInsertRows();
    if (changed > 0)
        Q_EMIT dataChanged(index(static_cast<int>(begin)), index(first - 1));
}

void MessageListModel::findLastQuestion()
{
    const auto found = std::find_if(m_messages.rbegin(), m_messages.rend(),
                                    [](const auto &message) { return message->role() == MessageRole::user; });
    const int row = static_cast<int>(m_messages.rend() - found) - 1;
    if (std::exchange(m_lastQuestion, row) != row)
        Q_EMIT lastQuestionChanged();
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
    m_toldStalled.erase(id);
    rowChanged(rowOf(id), {RunningRole, InterruptedRole, IndicatorTextRole, PlaceRole, ProofMarkRole});
    tick();
}

void MessageListModel::signalIndicator(const QUuid &id, const ReplyIndicator::Signal &signal)
{
    const auto found = m_indicators.find(id);
    if (found == m_indicators.end())
        return;
    const bool wasStalled = found->second.isStalled(m_clock.now());
    const bool waited = found->second.stalledFrom().has_value();
    if (found->second.apply(signal) || wasStalled)
        rowChanged(rowOf(id), {RunningRole, InterruptedRole, IndicatorTextRole, StalledRole});
    else if (waited)
        return; // the pieces of a reply that flows
    tick();
}

std::optional<AnswerProofs::Line> MessageListModel::proofLine(const QUuid &id) const
{
    const int row = rowOf(id);
    if (row < 0)
        return std::nullopt;
    const ChatMessage &message = *m_messages[static_cast<std::size_t>(row)];
    return m_proofs.line(message, isRunning(message));
}

void MessageListModel::proofsChanged()
{
    if (!m_messages.empty())
        Q_EMIT dataChanged(index(0), index(rowCount() - 1), {PlaceRole, ProofMarkRole});
}

std::chrono::milliseconds MessageListModel::thoughtFor(const QUuid &id) const
{
    const auto found = m_thought.find(id);
    return found == m_thought.end() ? std::chrono::milliseconds(0) : found->second;
}

void MessageListModel::setThoughtFor(const QUuid &id, std::chrono::milliseconds taken)
{
    m_thought.insert_or_assign(id, taken);
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

// Seconds are shown while a reply is waited for, and when it stands still: a whole second after another, and
// none when nothing waits.
void MessageListModel::tick()
{
    m_ticker.reset();
    std::optional<std::chrono::milliseconds> next;
    for (const auto &[id, indicator] : m_indicators) {
        if (!indicator.isRunning())
            continue;
        std::chrono::milliseconds pause = std::chrono::seconds(1);
        const bool flows = std::holds_alternative<ReplyIndicator::Streaming>(indicator.state()) &&
                           !indicator.isStalled(m_clock.now());
        if (!flows)
            showWaiting(id, indicator);
        else if (const auto from = indicator.stalledFrom())
            pause = std::chrono::milliseconds(m_clock.now().msecsTo(*from));
        else
            continue; // a tool is at work
        next = std::min(next.value_or(pause), pause);
    }
    if (next)
        m_ticker = m_clock.after(*next, [this] { tick(); });
}

void MessageListModel::showWaiting(const QUuid &id, const ReplyIndicator &indicator)
{
    rowChanged(rowOf(id), {IndicatorTextRole, StalledRole});
    const QDateTime now = m_clock.now();
    if (indicator.isStalled(now) && m_toldStalled.insert(id).second)
        Q_EMIT stalled(indicator.label(now));
}

} // namespace morvane
