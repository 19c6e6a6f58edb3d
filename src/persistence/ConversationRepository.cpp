#include "persistence/ConversationRepository.h"

#include "persistence/PersistenceError.h"
#include "persistence/SettingsRepository.h"
#include "persistence/StoreSchema.h"
#include "utils/log/Log.h"
#include "utils/text/Text.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QThread>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto category = Log::Category::Persistence;
constexpr const char *lastChange = columnName<Conversation>(&Conversation::Columns::updatedAt);
constexpr const char *owner = columnName<ChatMessage>(&ChatMessage::Columns::conversation);
constexpr const char *draft = columnName<Conversation>(&Conversation::Columns::sealedDraft);
constexpr qsizetype derivedTitleLength = 42;
constexpr qsizetype givenTitleLength = 80;
constexpr std::int64_t plainTextPortion = 500;

void assertMainThread()
{
    Q_ASSERT(!QCoreApplication::instance() ||
             QThread::currentThread() == QCoreApplication::instance()->thread());
}

// What `ask` answers; `otherwise` when the store refuses.
template <typename T, typename Ask>
T answerOr(T otherwise, Ask ask)
{
    assertMainThread();
    try {
        return ask();
    } catch (const DatabaseError &error) {
        Log::error(category, "Fetch failed: %s"_L1, {error.what()});
        return otherwise;
    }
}

PersistenceError::Cause causeOf(const DatabaseError &error)
{
    return error.isHeldElsewhere() ? PersistenceError::Cause::otherProcess : PersistenceError::Cause::store;
}

QStringList lines(const QString &text)
{
    static const QRegularExpression newline(u"\\r\\n|[\\n\\r\\x{0B}\\x{0C}\\x{85}\\x{2028}\\x{2029}]"_s);
    return text.split(newline);
}

bool isSpace(QChar character)
{
    return character == u'\t' || character.category() == QChar::Separator_Space;
}

QStringView withoutTrailingSpaces(QStringView text)
{
    while (!text.isEmpty() && isSpace(text.back()))
        text.chop(1);
    return text;
}

QStringView withoutSpaces(QStringView text)
{
    while (!text.isEmpty() && isSpace(text.front()))
        text = text.sliced(1);
    return withoutTrailingSpaces(text);
}

// What the person said first, of what is shown.
std::optional<QString> firstWords(const Conversation &conversation)
{
    for (const auto &message : conversation.transcript()) {
        if (message->role() == MessageRole::user)
            return message->content();
    }
    return std::nullopt;
}

// Sealed anew. A text that can't be opened or sealed is copied as it stands, so that nothing of it is lost.
QString resealed(const FieldSealing &sealing, const QString &sealed)
{
    const QString text = sealing.open(sealed);
    return text.isEmpty() ? sealed : sealing.seal(text).value_or(sealed);
}

std::optional<QString> resealed(const FieldSealing &sealing, const std::optional<QString> &sealed)
{
    return sealed ? std::optional(resealed(sealing, *sealed)) : std::nullopt;
}

template <typename R>
typename R::Columns copied(const FieldSealing &sealing, typename R::Columns row)
{
    forEachColumn<R>([&](const auto &column) {
        if constexpr (std::remove_cvref_t<decltype(column)>::isText) {
            if (column.isSealed())
                row.*column.field = resealed(sealing, row.*column.field);
        }
    });
    return row;
}

} // namespace

ConversationRepository::ConversationRepository(ObjectContext &context, Clock &clock,
                                               const SettingsRepository *defaults)
    : m_context(context)
    , m_clock(clock)
    , m_defaults(defaults)
{}

void ConversationRepository::save()
{
    assertMainThread();
    try {
        m_context.save();
    } catch (const DatabaseError &error) {
        Log::error(category, "Save failed: %s"_L1, {error.what()});
        throw PersistenceError(PersistenceError::Reason::saveFailed, causeOf(error));
    }
}

// Conversations of departed pages are left out of what people see.
FetchRequest ConversationRepository::listed(std::int64_t offset, std::int64_t count) const
{
    FetchRequest request{
        .order = QByteArray(lastChange) + " DESC, rowid DESC", .limit = count, .offset = offset};
    const auto departed = m_defaults ? m_defaults->list(legacyModuleConversationsKey) : std::nullopt;
    if (departed && !departed->isEmpty()) {
        request.where = QByteArray(idColumn) + " NOT IN (SELECT upper(value) FROM json_each(?))";
        request.values = {SqlCoding::value(*departed)};
    }
    return request;
}

ConversationRepository::Conversations ConversationRepository::fetch(const FetchRequest &request) const
{
    return answerOr(Conversations(), [&] { return m_context.fetch<Conversation>(request); });
}

ConversationRepository::Conversations ConversationRepository::all() const
{
    return page(0, -1);
}

ConversationRepository::Conversations ConversationRepository::page(std::int64_t offset,
                                                                   std::int64_t count) const
{
    return fetch(listed(offset, count));
}

std::shared_ptr<Conversation> ConversationRepository::mostRecent() const
{
    const Conversations first = page(0, 1);
    return first.empty() ? nullptr : first.front();
}

std::int64_t ConversationRepository::count() const
{
    return answerOr(std::int64_t{0}, [&] { return m_context.count<Conversation>(listed(0, -1)); });
}

std::shared_ptr<Conversation> ConversationRepository::find(const QUuid &id) const
{
    return answerOr(std::shared_ptr<Conversation>(), [&] { return m_context.find<Conversation>(id); });
}

std::shared_ptr<ImportedDocument> ConversationRepository::findDocument(const QUuid &id) const
{
    return answerOr(std::shared_ptr<ImportedDocument>(),
                    [&] { return m_context.find<ImportedDocument>(id); });
}

std::vector<SealedText> ConversationRepository::sealedTexts(std::int64_t count, std::int64_t before) const
{
    return answerOr(std::vector<SealedText>(), [&] { return m_context.sealedTexts(before, count); });
}

std::shared_ptr<Conversation> ConversationRepository::create()
{
    assertMainThread();
    const auto conversation = Conversation::create(
        m_context.sealing(),
        {.id = QUuid::createUuid(), .title = Conversation::untitled(), .createdAt = m_clock.now()});
    m_context.insert(conversation);
    try {
        save();
    } catch (const PersistenceError &) {
        m_context.withdraw(*conversation); // nobody would hold it
        throw;
    }
    return conversation;
}

std::shared_ptr<ChatMessage> ConversationRepository::makeMessage(const ChatMessage::Creation &fields) const
{
    return ChatMessage::create(m_context.sealing(), fields);
}

void ConversationRepository::add(const std::shared_ptr<ChatMessage> &message, Conversation &conversation)
{
    add(Conversation::Messages{message}, conversation);
}

void ConversationRepository::add(const Conversation::Messages &messages, Conversation &conversation)
{
    assertMainThread();
    for (const auto &message : messages) {
        conversation.append(message);
        m_context.insert(message);
        if (message->role() == MessageRole::user && conversation.title() == Conversation::untitled())
            conversation.setTitle(titleFrom(message->content()));
    }
    conversation.setUpdatedAt(m_clock.now());
    save();
}

void ConversationRepository::remove(const Conversation::Messages &messages, Conversation &conversation)
{
    assertMainThread();
    const bool titleIsOfWords = isTitledByFirstWords(conversation);
    for (const auto &message : messages)
        m_context.remove(*message);
    if (titleIsOfWords && conversation.isEmpty())
        conversation.setTitle(Conversation::untitled());
    save();
}

// Rows keep the order in which they were added, so what came after the first one that is missing is added
// again as well.
void ConversationRepository::putBack(const Conversation::Messages &before, Conversation &conversation)
{
    assertMainThread();
    const auto isMissing = [](const auto &message) { return !message->context(); };
    const auto first = std::ranges::find_if(before, isMissing);
    for (auto message = first; message != before.end(); ++message) {
        if (!isMissing(*message))
            m_context.remove(**message);
        conversation.append(*message);
        m_context.insert(*message);
    }
    if (const auto words = firstWords(conversation);
        words && conversation.title() == Conversation::untitled())
        conversation.setTitle(titleFrom(*words));
    save();
}

bool ConversationRepository::isTitledByFirstWords(const Conversation &conversation)
{
    const auto words = firstWords(conversation);
    return words && conversation.title() == titleFrom(*words);
}

std::shared_ptr<ImportedDocument> ConversationRepository::insert(const ImportedDocument::Creation &fields)
{
    assertMainThread();
    const auto document = ImportedDocument::create(m_context.sealing(), fields);
    m_context.insert(document);
    save();
    return document;
}

void ConversationRepository::rename(Conversation &conversation, const QString &title)
{
    assertMainThread();
    const QString clean = Text::trimmed(lines(title).join(u' '));
    if (clean.isEmpty())
        return;
    const QString shortened = Text::prefix(clean, givenTitleLength);
    const QString kept = withoutSpaces(shortened).toString();
    if (kept == conversation.title())
        return;
    conversation.setTitle(kept);
    save();
}

QString ConversationRepository::titleFrom(const QString &text)
{
    const QString line = lines(Text::trimmed(text)).constFirst();
    if (line.isEmpty())
        return Conversation::untitled();
    const QString start = Text::prefix(line, derivedTitleLength);
    if (start.size() == line.size())
        return line;
    return withoutTrailingSpaces(start).toString() + u'…';
}

std::shared_ptr<Conversation> ConversationRepository::adopt(const Conversation &conversation)
{
    assertMainThread();
    const auto &sealing = m_context.sealing();
    std::vector<std::shared_ptr<Record>> copies;
    const auto take = [&]<typename R>(const R &original) {
        auto copy = std::make_shared<R>(sealing, copied<R>(*sealing, original.columns()));
        m_context.insert(copy);
        copies.push_back(copy);
        return copy;
    };
    const auto copy = take(conversation);
    copy->setDraft({});
    for (const auto &message : conversation.messages()) {
        take(*message);
        if (const auto document = message->document())
            take(*document);
    }
    try {
        save();
    } catch (const PersistenceError &) {
        for (const auto &taken : copies)
            m_context.withdraw(*taken);
        throw;
    }
    return copy;
}

void ConversationRepository::remove(Conversation &conversation)
{
    assertMainThread();
    m_context.remove(conversation);
    save();
}

void ConversationRepository::removeEmpty(const Conversation *except)
{
    const auto empty = fetch({.where = QByteArray(draft) + " IS NULL AND NOT EXISTS (SELECT 1 FROM " +
                                       RecordTable<ChatMessage>::name + " WHERE " + owner + " = " +
                                       RecordTable<Conversation>::name + "." + idColumn + ")"});
    for (const auto &conversation : empty) {
        if (conversation.get() != except)
            m_context.remove(*conversation);
    }
    save();
}

std::vector<QUuid> ConversationRepository::prune(std::optional<std::chrono::seconds> interval,
                                                 const QDateTime &now)
{
    if (!interval)
        return {};
    const QDateTime cutoff = now.addSecs(-interval->count());
    const auto expired =
        fetch({.where = QByteArray(lastChange) + " < ?", .values = {SqlCoding::value(cutoff)}});
    if (expired.empty())
        return {};
    std::vector<QUuid> gone;
    for (const auto &conversation : expired) {
        gone.push_back(conversation->id());
        m_context.remove(*conversation);
    }
    save();
    Log::info(category, "Pruned %ld conversations past retention window"_L1, {expired.size()});
    return gone;
}

void ConversationRepository::deleteAll()
{
    assertMainThread();
    m_context.removeAll<Conversation>();
    m_context.removeAll<ChatMessage>();
    m_context.removeAll<ImportedDocument>();
    save();
}

// In portions, so that memory and the transaction stay small.
template <typename R>
std::int64_t ConversationRepository::sealPlainTextsOf()
{
    const QByteArray isPlain = StoreSchema::holdsPlainText(RecordTable<R>::name);
    std::int64_t sealed = 0;
    while (true) {
        const auto records = answerOr(std::vector<std::shared_ptr<R>>(), [&] {
            // In the order of the index over such rows; any other reads the whole table.
            return m_context.fetch<R>({.where = isPlain, .order = idColumn, .limit = plainTextPortion});
        });
        const auto changed = std::ranges::count_if(records, [](const auto &record) {
            const auto before = record->revision();
            record->sealPlainTexts();
            return record->revision() != before;
        });
        if (changed == 0)
            return sealed;
        sealed += changed;
        save();
    }
}

void ConversationRepository::sealPlainTexts()
{
    assertMainThread();
    const std::int64_t sealed = sealPlainTextsOf<Conversation>() + sealPlainTextsOf<ChatMessage>() +
                                sealPlainTextsOf<ImportedDocument>();
    if (sealed > 0)
        Log::info(category, "Sealed %ld record(s) an older build left in the clear"_L1, {sealed});
}

} // namespace morvane
