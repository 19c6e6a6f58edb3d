#pragma once

#include "models/RecordContext.h"
#include "persistence/Database.h"
#include "persistence/RecordTables.h"

#include <map>
#include <set>

// Which records, in which order, how many. `where` and `order` are SQL over the table's columns, always
// literals; values stand in `values` and are bound to the question marks.
struct FetchRequest {
    QByteArrayView where{"1"};
    std::vector<SqlValue> values;
    QByteArrayView order{"rowid"};
    std::int64_t limit = -1; // below 0: all
    std::int64_t offset = 0;
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

    [[nodiscard]] bool hasChanges() const;

    // Writes everything that changed, in one transaction. When that fails the store stays as it was, and the
    // changes stay here for the next attempt.
    void save();

private:
    using Identity = std::pair<RecordKind, QUuid>;

    void recordChanged(Record &record) override;
    void recordReleased(const Record &record) override;
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<ChatMessage>>>
    messagesOf(const Conversation &conversation) override;
    [[nodiscard]] bool hasMessages(const Conversation &conversation) override;
    [[nodiscard]] std::shared_ptr<Conversation> conversation(const QUuid &id) override;

    template <typename R>
    [[nodiscard]] std::shared_ptr<R> known(const QUuid &id) const;
    template <typename R>
    [[nodiscard]] Statement select(QByteArrayView what, const FetchRequest &request);

    void removeAll(RecordKind kind);
    void letGo(Record &record);
    void flush();
    void begin();
    void rollBack() noexcept;

    Database m_database;
    std::shared_ptr<const FieldSealing> m_sealing;
    std::map<Identity, Record *> m_live;            // every object handed out or inserted that still lives
    std::vector<std::shared_ptr<Record>> m_unsaved; // since the last save, oldest change first
    std::set<const Record *> m_unwritten;           // the unsaved ones that the transaction lacks
    std::vector<Identity> m_removed;                // since the last save
    std::set<RecordKind> m_emptied;                 // since the last save
    bool m_removalsWritten = false;                 // the transaction has m_removed and m_emptied
};
