#pragma once

#include "models/RecordContext.h"
#include "persistence/Database.h"
#include "persistence/RecordTables.h"

#include <optional>
#include <unordered_map>

namespace morvane {

// Which records, in which order, how many. `where` and `order` are SQL, made of literals and of names of
// columns alone; values stand in `values` and are bound to the question marks.
struct FetchRequest {
    QByteArray where{"1"};
    std::vector<SqlValue> values;
    QByteArray order{"rowid"};
    std::int64_t limit = -1; // below 0: all
    std::int64_t offset = 0;
};

// The text of a stored message as it is kept, without a record of it. It can be opened on any thread.
struct SealedText {
    std::int64_t position = 0; // grows in the order in which messages were added
    QUuid conversation;
    QUuid message;
    QString sealedContent;
};

// The records of one store as objects, one object for one row. Changes stay in memory until save().
//
// A fetch sees what has not been saved: it first writes the changed records into the open transaction, which
// save() commits. A process that dies before save() leaves the store as the last save left it.
//
// The context holds changed records; all others live only as long as someone else holds them. Main thread
// only. Fetches and save() throw DatabaseError.
class ObjectContext final : private RecordContext {
public:
    // The database carries the current schema.
    ObjectContext(Database database, std::shared_ptr<const FieldSealing> sealing);
    ~ObjectContext();
    ObjectContext(const ObjectContext &) = delete;
    ObjectContext &operator=(const ObjectContext &) = delete;

    [[nodiscard]] const std::shared_ptr<const FieldSealing> &sealing() const { return m_sealing; }

    void insert(const std::shared_ptr<Record> &record);

    // Removing a conversation removes its messages. The objects stay readable.
    void remove(Record &record);

    // Takes back an insertion that was never saved. The object stays readable.
    void withdraw(Record &record);

    // Removes every record of a type without loading one.
    template <typename R>
    void removeAll()
    {
        removeAll(RecordTable<R>::kind);
    }

    template <typename R>
    [[nodiscard]] std::vector<std::shared_ptr<R>> fetch(const FetchRequest &request = {});

    template <typename R>
    [[nodiscard]] std::shared_ptr<R> find(const QUuid &id);

    template <typename R>
    [[nodiscard]] std::int64_t count(const FetchRequest &request = {});

    // The last `count` messages that are shown and stand before `position`, latest first, for a search to go
    // through all of them in portions.
    [[nodiscard]] std::vector<SealedText> sealedTexts(std::int64_t before, std::int64_t count);

    [[nodiscard]] bool hasChanges() const;

    // Where saves end up from now on.
    void setWriting(Database::Writing writing) { m_database.setWriting(writing); }

    // Writes everything that changed, in one transaction. When that fails the store stays as it was, and the
    // changes stay here for the next attempt.
    void save();

private:
    using Identity = std::pair<RecordKind, QUuid>;

    struct IdentityHash {
        std::size_t operator()(const Identity &identity) const
        {
            return qHash(identity.second, static_cast<std::size_t>(identity.first));
        }
    };

    struct Removal {
        RecordKind kind;
        std::optional<QUuid> id; // none: every record of the kind
    };

    struct Entry {
        Record *record = nullptr;
        bool isUnsaved = false; // in m_unsaved
        bool isWritten = false; // the open transaction has its present values
    };

    void recordChanged(Record &record) override;
    void recordReleased(const Record &record) override;
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<ChatMessage>>>
    messagesOf(const Conversation &conversation) override;
    [[nodiscard]] bool hasMessages(const Conversation &conversation) override;
    [[nodiscard]] std::shared_ptr<Conversation> conversation(const QUuid &id) override;
    [[nodiscard]] std::shared_ptr<ImportedDocument> document(const QUuid &id) override;

    template <typename R>
    [[nodiscard]] std::shared_ptr<R> known(const QUuid &id) const;
    template <typename R>
    [[nodiscard]] Statement select(QByteArrayView what, const FetchRequest &request);

    void removeAll(RecordKind kind);
    void letGo(Record &record);
    void flush();
    void begin();
    void writeRemovals();
    void write(const Removal &removal);
    void removeRows(RecordKind kind, QByteArrayView column, const QUuid &id);
    void writeChanges();
    void rollBack() noexcept;

    Database m_database;
    std::shared_ptr<const FieldSealing> m_sealing;
    std::unordered_map<Identity, Entry, IdentityHash> m_live; // every object that was handed out and is held
    std::vector<std::shared_ptr<Record>> m_unsaved;           // in the order in which they first changed
    std::vector<Removal> m_removals;                          // since the last save, in order
    std::size_t m_writtenRemovals = 0;                        // how many of them the open transaction has
};

} // namespace morvane
