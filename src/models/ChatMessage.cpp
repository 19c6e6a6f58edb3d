#include "models/ChatMessage.h"

#include "models/Conversation.h"
#include "models/ImportedDocument.h"
#include "models/RecordContext.h"

namespace morvane {

namespace {

constexpr qsizetype keptToolLines = 8;

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

void ChatMessage::appendToolLine(const QString &line, ToolLineState state)
{
    setToolLines(toolLines() << line, toolStates() << rawText(state));
}

void ChatMessage::replaceLastToolLine(const QString &line, ToolLineState state)
{
    QStringList lines = toolLines();
    QStringList states = toolStates();
    if (!lines.isEmpty())
        lines.removeLast();
    if (!states.isEmpty())
        states.removeLast();
    setToolLines(lines << line, states << rawText(state));
}

// The states go with the lines: neither is stored without the other. Lines before them may have none.
void ChatMessage::setToolLines(QStringList lines, QStringList states)
{
    while (states.size() < lines.size())
        states.prepend(QString());
    const auto surplus = std::max(lines.size() - keptToolLines, qsizetype(0));
    const QString summary = lines.sliced(surplus).join(u'\n');
    setToolSummary(summary);
    if (toolSummary() == summary)
        assign(m_columns.toolStates, std::optional(states.sliced(surplus)));
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
}

} // namespace morvane
