#include "persistence/ChatStoreFingerprint.h"

#include "persistence/RecordTables.h"
#include "persistence/StoreSchema.h"
#include "security/SealedForm.h"
#include "utils/bytes/Base64.h"
#include "utils/bytes/SealedBox.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using ChatStoreLocation::Fingerprint;

// The sealed form of the empty text is known by its length.
bool holdsNothing(const QString &sealed)
{
    const auto box = Base64::decode(sealed.sliced(SealedForm::fieldMarker.size()).toUtf8());
    return box && box->size() == SealedBox::nonceSize + SealedBox::tagSize;
}

bool isUnreadable(const QString &stored, const FieldSealing &sealing)
{
    return SealedForm::isSealedField(stored) && sealing.open(stored).isEmpty() && !holdsNothing(stored);
}

// The rows that count: all of a table, or those of some ids.
struct Rows {
    const std::set<QUuid> *only = nullptr;

    [[nodiscard]] bool has(const QUuid &id) const { return !only || only->contains(id); }
};

void readField(Database &database, const StoreSchema::Table &table, const StoreSchema::Column &column,
               const QByteArray &storedName, const FieldSealing &sealing, Rows counted,
               Fingerprint &fingerprint)
{
    Statement rows =
        database.prepare(QByteArray("SELECT ") + idColumn + "," + storedName + ", length(CAST(" + storedName +
                         " AS BLOB)) FROM " + table.name + " WHERE " + storedName + " IS NOT NULL");
    std::int64_t bytes = 0;
    while (rows.step()) {
        if (!counted.has(rows.id()))
            continue;
        if (isUnreadable(rows.text(), sealing))
            ++fingerprint.unreadable;
        bytes += rows.integer();
    }
    fingerprint.fieldBytes[QString::fromLatin1(column.name)] = bytes;
}

std::set<QUuid> readIds(Statement rows, Rows counted)
{
    std::set<QUuid> ids;
    while (rows.step()) {
        if (const QUuid id = rows.id(); counted.has(id))
            ids.insert(id);
    }
    return ids;
}

std::set<QUuid> readTable(Database &database, const StoreSchema::Table &table, const FieldSealing &sealing,
                          Rows counted, Fingerprint &fingerprint)
{
    const auto storedNames = StoreSchema::storedNames(database, table);
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        if (table.columns[i].isSealed() && !storedNames[i].isEmpty())
            readField(database, table, table.columns[i], storedNames[i], sealing, counted, fingerprint);
    }
    return readIds(database.prepare(QByteArray("SELECT ") + idColumn + " FROM " + table.name), counted);
}

bool holdsAll(const std::set<QUuid> &copy, const std::set<QUuid> &source)
{
    return std::ranges::includes(copy, source);
}

} // namespace

Fingerprint ChatStoreLocation::fingerprint(Database &database, const FieldSealing &sealing,
                                           const Fingerprint *only)
{
    const auto &[conversations, messages, documents] = StoreSchema::tables();
    const auto read = [&](const StoreSchema::Table &table, auto ids, Fingerprint &result) {
        result.*ids = readTable(database, table, sealing, {only ? &(only->*ids) : nullptr}, result);
    };
    Fingerprint result;
    read(conversations, &Fingerprint::conversations, result);
    read(messages, &Fingerprint::messages, result);
    read(documents, &Fingerprint::documents, result);
    return result;
}

Fingerprint ChatStoreLocation::fingerprintOfWhatWasSaid(Database &database, const FieldSealing &sealing,
                                                        Fingerprint whole)
{
    const QByteArray owner = columnName<ChatMessage>(&ChatMessage::Columns::conversation);
    whole.conversations =
        readIds(database.prepare("SELECT DISTINCT " + owner + " FROM " + RecordTable<ChatMessage>::name),
                {&whole.conversations});
    return fingerprint(database, sealing, &whole);
}

std::optional<QString> ChatStoreLocation::shortcoming(const Fingerprint &source, const Fingerprint &copy)
{
    if (!holdsAll(copy.conversations, source.conversations) || !holdsAll(copy.messages, source.messages) ||
        !holdsAll(copy.documents, source.documents))
        return u"the copy is missing rows the original has"_s;
    const auto changed = std::ranges::count_if(source.fieldBytes, [&](const auto &field) {
        const auto copied = copy.fieldBytes.find(field.first);
        return field.second != (copied == copy.fieldBytes.end() ? 0 : copied->second);
    });
    if (changed > 0)
        return u"%1 sealed fields did not come through the copy at their original length"_s.arg(changed);
    return std::nullopt;
}

} // namespace morvane
