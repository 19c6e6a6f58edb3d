#include "models/ChatMessage.h"

#include "models/Conversation.h"
#include "models/ImportedDocument.h"
#include "models/RecordContext.h"
#include "utils/text/Json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace morvane {

namespace {

constexpr qsizetype keptToolLines = 8;

constexpr QLatin1StringView sent{"sent"};
constexpr QLatin1StringView received{"received"};
constexpr QLatin1StringView fromOutside{"fromOutside"};

QString writeDetails(const QList<ToolDetail> &details)
{
    QJsonArray rows;
    for (const ToolDetail &detail : details)
        rows.append(QJsonObject{
            {sent, detail.sent}, {received, detail.received}, {fromOutside, detail.isFromOutside}});
    return QString::fromUtf8(QJsonDocument(rows).toJson(QJsonDocument::Compact));
}

QList<ToolDetail> readDetails(const QString &text)
{
    QList<ToolDetail> details;
    const QJsonArray rows = QJsonDocument::fromJson(text.toUtf8()).array();
    for (const QJsonValue &row : rows) {
        const QJsonObject detail = row.toObject();
        details.append({Json::string(detail, sent).value_or(QString()),
                        Json::string(detail, received).value_or(QString()),
                        Json::boolean(detail, fromOutside).value_or(true)});
    }
    return details;
}

} // namespace

ChatMessage::ChatMessage(std::shared_ptr<const FieldSealing> sealing, Columns columns)
    : Record(RecordKind::ChatMessage, columns.id, std::move(sealing))
    , m_columns(std::move(columns))
{}

std::shared_ptr<ChatMessage> ChatMessage::create(std::shared_ptr<const FieldSealing> sealing,
                                                 const Creation &fields)
{
    Columns columns;
    columns.id = fields.id;
    columns.roleRaw = rawText(fields.role);
    columns.sealedContent = sealedAtCreation(*sealing, fields.content);
    columns.createdAt = fields.createdAt;
    columns.statusRaw = rawText(fields.status);
    columns.attachmentID = fields.attachmentID;
    columns.sealedAttachmentName = sealedAtCreation(*sealing, fields.attachmentName);
    columns.versionGroup = fields.versionGroup;
    columns.answers = fields.answers;
    return std::make_shared<ChatMessage>(std::move(sealing), std::move(columns));
}

MessageStatus ChatMessage::status() const
{
    return fromRawText<MessageStatus>(m_columns.statusRaw).value_or(MessageStatus::delivered);
}

QStringList ChatMessage::toolLines() const
{
    const QString summary = toolSummary().value_or(QString());
    return summary.isEmpty() ? QStringList() : summary.split(u'\n');
}

QStringList ChatMessage::toolStates() const
{
    const QStringList states = m_columns.toolStates.value_or(QStringList());
    return states.size() == toolLines().size() ? states : QStringList();
}

QList<ToolDetail> ChatMessage::toolDetails() const
{
    const QList<ToolDetail> details = readDetails(opened(m_columns.sealedToolDetails).value_or(QString()));
    return details.size() == toolLines().size() ? details : QList<ToolDetail>();
}

void ChatMessage::appendToolLine(const QString &line, ToolLineState state, const ToolDetail &detail)
{
    setToolLines(toolLines() << line, toolStates() << rawText(state), toolDetails() << detail);
}

void ChatMessage::replaceLastToolLine(const QString &line, ToolLineState state, const ToolDetail &detail)
{
    QStringList lines = toolLines();
    QStringList states = toolStates();
    QList<ToolDetail> details = toolDetails();
    if (!lines.isEmpty())
        lines.removeLast();
    if (!states.isEmpty())
        states.removeLast();
    if (!details.isEmpty())
        details.removeLast();
    setToolLines(lines << line, states << rawText(state), details << detail);
}

void ChatMessage::stopToolLines()
{
    if (!m_columns.toolStates)
        return;
    QStringList states = *m_columns.toolStates;
    states.replaceInStrings(rawText(ToolLineState::running), rawText(ToolLineState::stopped));
    assign(m_columns.toolStates, std::optional(states));
}

// The states and the details go with the lines: neither is stored without those. Lines before them may have
// none.
void ChatMessage::setToolLines(QStringList lines, QStringList states, QList<ToolDetail> details)
{
    while (states.size() < lines.size())
        states.prepend(QString());
    while (details.size() < lines.size())
        details.prepend(ToolDetail());
    const auto surplus = std::max(lines.size() - keptToolLines, qsizetype(0));
    const QString summary = lines.sliced(surplus).join(u'\n');
    setToolSummary(summary);
    if (toolSummary() != summary)
        return;
    assign(m_columns.toolStates, std::optional(states.sliced(surplus)));
    assignSealed(m_columns.sealedToolDetails, std::optional(writeDetails(details.sliced(surplus))));
}

std::shared_ptr<Conversation> ChatMessage::conversation() const
{
    if (!context() || !m_columns.conversation)
        return nullptr;
    return context()->conversation(*m_columns.conversation);
}

std::shared_ptr<ImportedDocument> ChatMessage::document() const
{
    if (!context() || !m_columns.attachmentID)
        return nullptr;
    return context()->document(*m_columns.attachmentID);
}

void ChatMessage::sealPlainTexts()
{
    sealIfPlain(m_columns.sealedContent);
    sealIfPlain(m_columns.sealedErrorMessage);
    sealIfPlain(m_columns.sealedAttachmentName);
    sealIfPlain(m_columns.sealedToolSummary);
    sealIfPlain(m_columns.sealedToolDetails);
}

} // namespace morvane
