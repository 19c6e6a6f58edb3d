#include "persistence/ObjectContext.h"

#include "utils/log/Log.h"

#include <QCoreApplication>
#include <QThread>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr const char *ownerColumn = columnName<ChatMessage>(&ChatMessage::Columns::conversation);
constexpr const char *contentColumn = columnName<ChatMessage>(&ChatMessage::Columns::sealedContent);
constexpr const char *setAsideColumn = columnName<ChatMessage>(&ChatMessage::Columns::isSetAside);

void assertMainThread()
{
    Q_ASSERT(!QCoreApplication::instance() ||
             QThread::currentThread() == QCoreApplication::instance()->thread());
}

// What `ask` answers; `otherwise` when the store refuses. Records read through here, and reads never throw.
template <typename T, typename Ask>
T answerOr(T otherwise, Ask ask)
{
    try {
        return ask();
    } catch (const DatabaseError &error) {
        Log::error(Log::Category::Persistence, "Fetch failed: %s"_L1, {error.what()});
        return otherwise;
    }
}

QByteArray joined(std::initializer_list<QByteArrayView> pieces)
{
    QByteArray text;
    for (const QByteArrayView piece : pieces)
        text.append(piece);
    return text;
}

// Writes a whole row, whether the table has it or not. A row that stays keeps its place in the order.
template <typename R>
QByteArray upsertSql()
{
    const QByteArrayList columns = columnNames<R>();
    QByteArrayList marks;
    QByteArrayList updates;
    for (const QByteArray &column : columns) {
        marks.append("?");
        updates.append(column + "=excluded." + column);
    }
    return joined({"INSERT INTO ", RecordTable<R>::name, "(", columns.join(','), ") VALUES(", marks.join(','),
                   ") ON CONFLICT(", idColumn, ") DO UPDATE SET ", updates.join(',')});
}

template <typename R>
void writeRow(Statement &upsert, const Record &record)
{
    bindRow<R>(upsert, static_cast<const R &>(record).columns());
    upsert.run();
}

FetchRequest messagesIn(const Conversation &conversation)
{
    return {.where = joined({ownerColumn, "=?"}), .values = {SqlCoding::value(conversation.id())}};
}

QByteArrayView tableOf(RecordKind kind)
{
    switch (kind) {
    case RecordKind::Conversation:
        return RecordTable<Conversation>::name;
    case RecordKind::ChatMessage:
        return RecordTable<ChatMessage>::name;
    case RecordKind::ImportedDocument:
        return RecordTable<ImportedDocument>::name;
    }
    return {};
}

} // namespace

ObjectContext::ObjectContext(Database database, std::shared_ptr<const FieldSealing> sealing)
    : m_database(std::move(database))
    , m_sealing(std::move(sealing))
{}

ObjectContext::~ObjectContext()
{
    for (const auto &[identity, entry] : m_live)
        entry.record->detach();
}

void ObjectContext::insert(const std::shared_ptr<Record> &record)
{
    assertMainThread();
    const Identity identity(record->kind(), record->id());
    if (const auto former = m_live.find(identity); former != m_live.end())
        letGo(*former->second.record);
    m_live[identity].record = record.get();
    record->attach(*this);
    recordChanged(*record);
}

void ObjectContext::remove(Record &record)
{
    assertMainThread();
    const auto keep = record.shared_from_this();
    if (record.context() != this)
        return;
    std::vector<std::shared_ptr<Record>> goes{keep};
    if (record.kind() == RecordKind::Conversation) {
        for (const auto &[identity, entry] : m_live) {
            if (identity.first != RecordKind::ChatMessage)
                continue;
            if (static_cast<const ChatMessage *>(entry.record)->conversationID() == record.id())
                goes.push_back(entry.record->shared_from_this());
        }
    } else if (record.kind() == RecordKind::ChatMessage) {
        const auto &message = static_cast<const ChatMessage &>(record);
        const auto owner =
            message.conversationID() ? known<Conversation>(*message.conversationID()) : nullptr;
        if (owner)
            owner->forget(message);
    }
    for (const auto &one : goes)
        letGo(*one);
    m_removals.push_back({record.kind(), record.id()});
}

void ObjectContext::withdraw(Record &record)
{
    assertMainThread();
    const auto keep = record.shared_from_this();
    if (record.context() == this)
        letGo(record);
}

void ObjectContext::removeAll(RecordKind kind)
{
    assertMainThread();
    std::vector<std::shared_ptr<Record>> goes;
    for (const auto &[identity, entry] : m_live) {
        if (identity.first == kind)
            goes.push_back(entry.record->shared_from_this());
    }
    for (const auto &one : goes)
        letGo(*one);
    m_removals.push_back({kind, std::nullopt});
}

// The record is no longer part of this context. The caller holds it.
void ObjectContext::letGo(Record &record)
{
    const auto found = m_live.find({record.kind(), record.id()});
    if (found->second.isUnsaved)
        std::erase_if(m_unsaved, [&](const auto &unsaved) { return unsaved.get() == &record; });
    m_live.erase(found);
    record.detach();
}

void ObjectContext::recordChanged(Record &record)
{
    assertMainThread();
    Entry &entry = m_live.at({record.kind(), record.id()});
    entry.isWritten = false;
    if (entry.isUnsaved)
        return;
    entry.isUnsaved = true;
    m_unsaved.push_back(record.shared_from_this());
}

void ObjectContext::recordReleased(const Record &record)
{
    m_live.erase({record.kind(), record.id()});
}

bool ObjectContext::hasChanges() const
{
    return !m_unsaved.empty() || !m_removals.empty();
}

void ObjectContext::save()
{
    assertMainThread();
    if (!hasChanges())
        return;
    try {
        flush();
        m_database.execute("COMMIT");
    } catch (const DatabaseError &) {
        rollBack();
        throw;
    }
    for (const auto &record : m_unsaved)
        m_live.at({record->kind(), record->id()}).isUnsaved = false;
    m_unsaved.clear();
    m_removals.clear();
    m_writtenRemovals = 0;
}

// Brings the open transaction up to date with the objects, starting one when there is something to write.
void ObjectContext::flush()
{
    if (!hasChanges())
        return;
    begin();
    try {
        writeRemovals();
        writeChanges();
    } catch (const DatabaseError &) {
        rollBack();
        throw;
    }
}

// SQLite may have ended a transaction on its own after an error; then nothing of it counts as written.
void ObjectContext::begin()
{
    if (m_database.isInTransaction())
        return;
    for (const auto &record : m_unsaved)
        m_live.at({record->kind(), record->id()}).isWritten = false;
    m_writtenRemovals = 0;
    m_database.execute("BEGIN IMMEDIATE");
}

void ObjectContext::rollBack() noexcept
{
    try {
        if (m_database.isInTransaction())
            m_database.execute("ROLLBACK");
    } catch (const DatabaseError &error) {
        Log::error(Log::Category::Persistence, "Roll back failed: %s"_L1, {error.what()});
    }
}

void ObjectContext::removeRows(RecordKind kind, QByteArrayView column, const QUuid &id)
{
    m_database.prepare(joined({"DELETE FROM ", tableOf(kind), " WHERE ", column, "=?"}))
        .bind(SqlCoding::value(id))
        .run();
}

// Each once in a transaction: a record may have been inserted anew, and been written, since.
void ObjectContext::writeRemovals()
{
    for (; m_writtenRemovals < m_removals.size(); ++m_writtenRemovals)
        write(m_removals[m_writtenRemovals]);
}

void ObjectContext::write(const Removal &removal)
{
    if (!removal.id) {
        m_database.execute(joined({"DELETE FROM ", tableOf(removal.kind)}));
        return;
    }
    removeRows(removal.kind, idColumn, *removal.id);
    if (removal.kind == RecordKind::Conversation)
        removeRows(RecordKind::ChatMessage, ownerColumn, *removal.id);
}

void ObjectContext::writeChanges()
{
    static const QByteArray conversationSql = upsertSql<Conversation>();
    static const QByteArray messageSql = upsertSql<ChatMessage>();
    static const QByteArray documentSql = upsertSql<ImportedDocument>();
    Statement conversations = m_database.prepare(conversationSql);
    Statement messages = m_database.prepare(messageSql);
    Statement documents = m_database.prepare(documentSql);
    for (const auto &record : m_unsaved) {
        Entry &entry = m_live.at({record->kind(), record->id()});
        if (entry.isWritten)
            continue;
        switch (record->kind()) {
        case RecordKind::Conversation:
            writeRow<Conversation>(conversations, *record);
            break;
        case RecordKind::ChatMessage:
            writeRow<ChatMessage>(messages, *record);
            break;
        case RecordKind::ImportedDocument:
            writeRow<ImportedDocument>(documents, *record);
            break;
        }
        entry.isWritten = true;
    }
}

template <typename R>
std::shared_ptr<R> ObjectContext::known(const QUuid &id) const
{
    const auto found = m_live.find({RecordTable<R>::kind, id});
    if (found == m_live.end())
        return nullptr;
    return std::static_pointer_cast<R>(found->second.record->shared_from_this());
}

template <typename R>
Statement ObjectContext::select(QByteArrayView what, const FetchRequest &request)
{
    Statement statement =
        m_database.prepare(joined({"SELECT ", what, " FROM ", RecordTable<R>::name, " WHERE ", request.where,
                                   " ORDER BY ", request.order, " LIMIT ? OFFSET ?"}));
    for (const SqlValue &value : request.values)
        statement.bind(value);
    statement.bind(request.limit).bind(request.offset);
    return statement;
}

template <typename R>
std::vector<std::shared_ptr<R>> ObjectContext::fetch(const FetchRequest &request)
{
    assertMainThread();
    flush();
    static const QByteArray columns = columnNames<R>().join(',');
    Statement rows = select<R>(columns, request);
    std::vector<std::shared_ptr<R>> records;
    while (rows.step()) {
        const QUuid id = rows.id();
        if (id.isNull())
            continue; // damaged: nothing could refer to it
        auto &[identity, entry] = *m_live.try_emplace({RecordTable<R>::kind, id}).first;
        std::shared_ptr<R> record;
        if (entry.record) {
            record = std::static_pointer_cast<R>(entry.record->shared_from_this());
        } else {
            record = std::make_shared<R>(m_sealing, readRow<R>(id, rows));
            entry.record = record.get();
            record->attach(*this);
        }
        records.push_back(std::move(record));
    }
    return records;
}

template <typename R>
std::shared_ptr<R> ObjectContext::find(const QUuid &id)
{
    if (auto record = known<R>(id))
        return record;
    const auto found =
        fetch<R>({.where = joined({idColumn, "=?"}), .values = {SqlCoding::value(id)}, .limit = 1});
    return found.empty() ? nullptr : found.front();
}

template <typename R>
std::int64_t ObjectContext::count(const FetchRequest &request)
{
    assertMainThread();
    flush();
    FetchRequest plain = request;
    plain.order = "1";
    Statement statement = select<R>("count(*)", plain);
    return statement.step() ? statement.integer() : 0;
}

std::vector<SealedText> ObjectContext::sealedTexts(std::int64_t before, std::int64_t count)
{
    assertMainThread();
    flush();
    Statement rows = select<ChatMessage>(joined({"rowid,", ownerColumn, ",", idColumn, ",", contentColumn}),
                                         {.where = joined({"rowid<? AND ", setAsideColumn, " IS NOT 1"}),
                                          .values = {before},
                                          .order = "rowid DESC",
                                          .limit = count});
    std::vector<SealedText> texts;
    while (rows.step()) {
        SealedText &text = texts.emplace_back();
        text.position = rows.integer();
        text.conversation = rows.id();
        text.message = rows.id();
        text.sealedContent = rows.text();
    }
    return texts;
}

template std::vector<std::shared_ptr<Conversation>> ObjectContext::fetch(const FetchRequest &);
template std::vector<std::shared_ptr<ChatMessage>> ObjectContext::fetch(const FetchRequest &);
template std::vector<std::shared_ptr<ImportedDocument>> ObjectContext::fetch(const FetchRequest &);
template std::shared_ptr<Conversation> ObjectContext::find(const QUuid &);
template std::shared_ptr<ChatMessage> ObjectContext::find(const QUuid &);
template std::shared_ptr<ImportedDocument> ObjectContext::find(const QUuid &);
template std::int64_t ObjectContext::count<Conversation>(const FetchRequest &);
template std::int64_t ObjectContext::count<ChatMessage>(const FetchRequest &);
template std::int64_t ObjectContext::count<ImportedDocument>(const FetchRequest &);

std::optional<std::vector<std::shared_ptr<ChatMessage>>>
ObjectContext::messagesOf(const Conversation &conversation)
{
    using Messages = std::optional<std::vector<std::shared_ptr<ChatMessage>>>;
    return answerOr(Messages(), [&] { return Messages(fetch<ChatMessage>(messagesIn(conversation))); });
}

bool ObjectContext::hasMessages(const Conversation &conversation)
{
    return answerOr(true, [&] {
        flush();
        return select<ChatMessage>("1", messagesIn(conversation)).step();
    });
}

std::shared_ptr<Conversation> ObjectContext::conversation(const QUuid &id)
{
    return answerOr(std::shared_ptr<Conversation>(), [&] { return find<Conversation>(id); });
}

std::shared_ptr<ImportedDocument> ObjectContext::document(const QUuid &id)
{
    return answerOr(std::shared_ptr<ImportedDocument>(), [&] { return find<ImportedDocument>(id); });
}

} // namespace morvane
