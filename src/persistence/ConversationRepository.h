#pragma once

#include "async/Clock.h"
#include "models/Conversation.h"
#include "models/ImportedDocument.h"
#include "persistence/ObjectContext.h"

#include <chrono>
#include <limits>

namespace morvane {

class SettingsRepository;

// The only code that fetches, creates, saves and removes records of a context. Main thread only, and each
// entry point asserts it.
//
// A read never fails visibly: one that the store refuses gives the empty answer. Everything that saves throws
// PersistenceError::saveFailed; what was to be saved then stays in the context for the next save.
class ConversationRepository {
public:
    using Conversations = std::vector<std::shared_ptr<Conversation>>;

    // Ids of conversations that belonged to pages which have left the application, as a list of texts.
    static constexpr QLatin1StringView legacyModuleConversationsKey{"chat.legacyModuleConversations.v1"};

    // `defaults` tells which conversations stay out of the list; a store in memory has none.
    explicit ConversationRepository(ObjectContext &context, Clock &clock,
                                    const SettingsRepository *defaults = nullptr);

    [[nodiscard]] ObjectContext &context() const { return m_context; }

    void save();

    // All of these in order: last changed first.
    [[nodiscard]] Conversations all() const;
    [[nodiscard]] Conversations page(std::int64_t offset, std::int64_t count) const;
    [[nodiscard]] std::shared_ptr<Conversation> mostRecent() const;

    [[nodiscard]] std::int64_t count() const;
    [[nodiscard]] std::shared_ptr<Conversation> find(const QUuid &id) const;
    [[nodiscard]] std::shared_ptr<ImportedDocument> findDocument(const QUuid &id) const;

    // For a search over all messages: portions, latest first, each before the position of the last one. An
    // empty portion is the end.
    [[nodiscard]] std::vector<SealedText>
    sealedTexts(std::int64_t count, std::int64_t before = std::numeric_limits<std::int64_t>::max()) const;

    // Inserted and saved, untitled. When it can't be saved there is none.
    std::shared_ptr<Conversation> create();

    // A message for add(), with its texts sealed under the context's key.
    [[nodiscard]] std::shared_ptr<ChatMessage> makeMessage(const ChatMessage::Creation &fields) const;

    // Adds the message and saves. The first words of a person give an untitled conversation its title. The
    // message is part of the conversation even when saving it fails.
    void add(const std::shared_ptr<ChatMessage> &message, Conversation &conversation);

    // The same for several at once: a process that dies leaves all of them or none.
    void add(const Conversation::Messages &messages, Conversation &conversation);

    // Removes messages of the conversation and saves. A title made of the words of its first one goes with
    // the last.
    void remove(const Conversation::Messages &messages, Conversation &conversation);

    // Takes back that removal, if nothing was added since, and saves. `before` is what messages() gave before
    // it; what stands there again stands in its old place.
    void putBack(const Conversation::Messages &before, Conversation &conversation);

    // Inserts the record of an imported file and saves.
    std::shared_ptr<ImportedDocument> insert(const ImportedDocument::Creation &fields);

    // Whether the conversation is called by the first words that are shown of a person in it.
    [[nodiscard]] static bool isTitledByFirstWords(const Conversation &conversation);

    // Line ends and outer whitespace go; blank text, the present title and a locked vault change nothing.
    void rename(Conversation &conversation, const QString &title);
    [[nodiscard]] static QString titleFrom(const QString &text);

    // Copies a conversation of another store with its messages and the records of its files, under the same
    // ids, but not what was begun to be written there. When the copy can't be saved this store is as before.
    std::shared_ptr<Conversation> adopt(const Conversation &conversation);

    // Removes the conversation with its messages and saves.
    void remove(Conversation &conversation);
    // Those without a message or a draft.
    void removeEmpty(const Conversation *except = nullptr);

    // Removes what was last changed before `now` minus the interval; gives the ids of the chats that went.
    std::vector<QUuid> prune(std::optional<std::chrono::seconds> interval, const QDateTime &now);
    void deleteAll();

    // Seals the texts that a build from before sealing left readable, as far as they can be sealed now. Costs
    // nothing when there are none.
    void sealPlainTexts();

private:
    [[nodiscard]] FetchRequest listed(std::int64_t offset, std::int64_t count) const;
    [[nodiscard]] Conversations fetch(const FetchRequest &request) const;

    template <typename R>
    std::int64_t sealPlainTextsOf();

    ObjectContext &m_context;
    Clock &m_clock;
    const SettingsRepository *m_defaults;
};

} // namespace morvane
