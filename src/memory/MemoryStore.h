#pragma once

#include "utils/files/SupportFolders.h"

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QUuid>

#include <optional>
#include <vector>

namespace morvane {

class Clock;
class LocalDataVault;
class SettingsStore;

// The short notes about the person. They are held here and rewritten whole into one sealed file after every
// change. A change that can't be written is logged and stays in memory.
//
// Main thread only. What it is given outlives it.
class MemoryStore final : public QObject {
    Q_OBJECT

public:
    static constexpr std::size_t maxFacts = 80;
    static constexpr std::size_t maxReceipts = 3;

    struct Fact {
        QUuid id; // for this run only
        QString text;
        QDateTime recordedAt; // the moment of loading for a note of an earlier run

        bool operator==(const Fact &) const = default;
    };

    // A note that was forgotten, and where it stood.
    struct Forgotten {
        Fact fact;
        std::size_t index = 0;

        bool operator==(const Forgotten &) const = default;
    };

    // One save, or the forgetting of some notes at once, so that it can be undone.
    struct Receipt {
        QUuid id;
        QUuid factID; // null where notes were forgotten
        QString text;
        std::optional<QString> previousText; // what the note said before; nothing for a new note
        std::vector<Forgotten> forgotten;    // in their order; empty for a save
        QString chat;                        // where it happened; empty for outside of chats

        bool operator==(const Receipt &) const = default;
    };

    // Makes the folder, folds what older builds left in it, and loads. An empty `directory` keeps notes for
    // this run only.
    MemoryStore(const SettingsStore &settings, const LocalDataVault &vault, const Clock &clock,
                const QString &directory = defaultDirectory(SupportFolders::standard()),
                QObject *parent = nullptr);

    [[nodiscard]] static QString defaultDirectory(const SupportFolders &folders);

    [[nodiscard]] const std::vector<Fact> &facts() const; // oldest first
    [[nodiscard]] const std::vector<Receipt> &receipts() const;

    // The file is sealed with a key that is gone, or with one that is locked away. It is not written over
    // until it opens or is cleared.
    [[nodiscard]] bool loadFailed() const;

    // What the file holds is not known: loadFailed(), concealed, or the system won't let it be read. Nothing
    // is kept then until it can be read or is cleared.
    [[nodiscard]] bool isUnreadable() const;

    [[nodiscard]] bool isEnabled() const;

    // The notes for a system prompt, newest first, as many as its budget takes. Nothing while switched off.
    [[nodiscard]] std::optional<QString> promptBlock() const;

    // Nothing for an empty text, and while the file is unreadable. A note with the same words takes the new
    // spelling.
    std::optional<Receipt> remember(const QString &text, const QString &chat = {});
    std::optional<QString> record(const QString &text); // the text as it is stored

    [[nodiscard]] std::vector<Fact> matching(const QString &description) const;
    qsizetype forget(const QString &description, const QString &chat = {}); // how many went

    // Forgotten notes come back where they stood, but for those that were saved anew, as far as there is
    // room.
    void undo(const QUuid &receiptID);
    void dismiss(const QUuid &receiptID);
    void remove(const QUuid &factID);
    // The person's own words: an undo of what stood there before is no longer offered. An empty text changes
    // nothing.
    void update(const QUuid &factID, const QString &text);

    // Removes every note. The one way out of a file whose key is gone.
    void clear();

    void fold();
    void load();

    // For a lock: lets go of every text, and keeps nothing until readAnew(). Notes of this run only stay.
    void conceal();
    // After an unlock: drops what is held, folds and loads.
    void readAnew();

Q_SIGNALS:
    void factsChanged();
    void receiptsChanged();
    void readabilityChanged(); // loadFailed() or isUnreadable()

private:
    using FactIterator = std::vector<Fact>::iterator;

    [[nodiscard]] FactIterator find(const QUuid &factID);
    void keepReceipt(Receipt receipt);
    void bringBack(const std::vector<Forgotten> &forgotten);
    void removeReceiptsOf(const QUuid &factID);
    void setFacts(const QStringList &notes);
    void setReadability(bool loadFailed, bool fileUnread);
    void factsWereChanged(); // writes and tells
    void write() const;
    [[nodiscard]] QString path() const;
    void assertThread() const;

    const SettingsStore &m_settings;
    const LocalDataVault &m_vault;
    const Clock &m_clock;
    const QString m_directory;
    std::vector<Fact> m_facts;
    std::vector<Receipt> m_receipts;
    bool m_isConcealed = false;
    bool m_loadFailed = false;
    bool m_fileUnread = false; // there is a file, and the system wouldn't let us read it
};

} // namespace morvane
