#pragma once

#include <QUuid>

#include <memory>
#include <optional>
#include <vector>

namespace morvane {

class ChatMessage;
class Conversation;
class ImportedDocument;
class Record;

// What a record asks of the object context that holds it. A context outlives no record's use of it: it takes
// itself out of every record before it goes.
class RecordContext {
public:
    // A field of the record has a new value.
    virtual void recordChanged(Record &record) = 0;

    // Nobody holds the record any more.
    virtual void recordReleased(const Record &record) = 0;

    // The stored messages of a conversation in the order they were added. Nothing when they cannot be read.
    [[nodiscard]] virtual std::optional<std::vector<std::shared_ptr<ChatMessage>>>
    messagesOf(const Conversation &conversation) = 0;

    // Answers without loading a message. An unreadable store counts as having some.
    [[nodiscard]] virtual bool hasMessages(const Conversation &conversation) = 0;

    // Null when there is none and when the store cannot be read.
    [[nodiscard]] virtual std::shared_ptr<Conversation> conversation(const QUuid &id) = 0;
    [[nodiscard]] virtual std::shared_ptr<ImportedDocument> document(const QUuid &id) = 0;

protected:
    ~RecordContext() = default;
};

} // namespace morvane
