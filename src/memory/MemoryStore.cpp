#include "memory/MemoryStore.h"

#include "async/Clock.h"
#include "memory/MemoryFile.h"
#include "memory/MemoryFold.h"
#include "memory/NoteText.h"
#include "persistence/SettingsStore.h"
#include "security/LocalDataVault.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"
#include "utils/text/Product.h"
#include "utils/text/Text.h"

#include <QThread>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto category = Log::Category::Persistence;
constexpr qsizetype promptBudget = 4000; // characters of the lines, one more for each line's end

} // namespace

MemoryStore::MemoryStore(const SettingsStore &settings, const LocalDataVault &vault, const Clock &clock,
                         const QString &directory, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_vault(vault)
    , m_clock(clock)
    , m_directory(directory)
{
    try {
        if (!m_directory.isEmpty())
            PrivateFile::createFolder(m_directory);
    } catch (const FileError &) {
        // The first write says so.
    }
    fold();
    load();
}

QString MemoryStore::defaultDirectory(const SupportFolders &folders)
{
    return folders.data.isEmpty() ? QString() : folders.data + u'/' + Product::serviceName;
}

const std::vector<MemoryStore::Fact> &MemoryStore::facts() const
{
    assertThread();
    return m_facts;
}

const std::vector<MemoryStore::Receipt> &MemoryStore::receipts() const
{
    assertThread();
    return m_receipts;
}

bool MemoryStore::loadFailed() const
{
    assertThread();
    return m_loadFailed;
}

bool MemoryStore::isUnreadable() const
{
    assertThread();
    return m_loadFailed || m_fileUnread || m_isConcealed;
}

bool MemoryStore::isEnabled() const
{
    assertThread();
    return m_settings.memoryEnabled();
}

std::optional<QString> MemoryStore::promptBlock() const
{
    if (!isEnabled())
        return std::nullopt;
    QStringList lines;
    qsizetype budget = promptBudget;
    for (auto fact = m_facts.crbegin(); fact != m_facts.crend(); ++fact) {
        const QString line = MemoryFile::bullet(fact->text);
        const qsizetype length = Text::characterCount(line);
        if (budget - length < 1)
            break;
        budget -= length + 1;
        lines.append(line);
    }
    if (lines.isEmpty())
        return std::nullopt;
    return u"What you remember about this person from earlier conversations:\n"_s + lines.join(u'\n') +
           u"\n\nUse these naturally when they're relevant. Don't recite them back or mention that you have "
           u"notes unless asked."_s;
}

std::optional<MemoryStore::Receipt> MemoryStore::remember(const QString &text, const QString &chat)
{
    assertThread();
    const QString form = NoteText::normalized(NoteText::stored(text));
    const auto isSame = [&](const Fact &fact) { return NoteText::normalized(fact.text) == form; };
    const auto before = std::ranges::find_if(m_facts, isSame);
    std::optional<QString> previousText;
    if (before != m_facts.end())
        previousText = before->text;

    const auto stored = record(text);
    if (!stored)
        return std::nullopt;
    const auto after = std::find_if(m_facts.crbegin(), m_facts.crend(), isSame);
    const Receipt receipt{QUuid::createUuid(), after->id, *stored, previousText, {}, chat};
    keepReceipt(receipt);
    return receipt;
}

void MemoryStore::keepReceipt(Receipt receipt)
{
    m_receipts.push_back(std::move(receipt));
    if (m_receipts.size() > maxReceipts)
        m_receipts.erase(m_receipts.begin());
    Q_EMIT receiptsChanged();
}

std::optional<QString> MemoryStore::record(const QString &text)
{
    assertThread();
    const QString stored = NoteText::stored(text);
    if (stored.isEmpty() || isUnreadable())
        return std::nullopt;
    const QString form = NoteText::normalized(stored);
    const auto same = std::ranges::find_if(
        m_facts, [&](const Fact &fact) { return NoteText::normalized(fact.text) == form; });
    const bool isNew = same == m_facts.end();
    if (isNew)
        m_facts.push_back({QUuid::createUuid(), stored, m_clock.now()});
    else
        same->text = stored;
    if (m_facts.size() > maxFacts)
        m_facts.erase(m_facts.begin(), m_facts.end() - maxFacts);
    factsWereChanged();
    if (isNew)
        Log::info(category, "Memory: recorded a fact (%ld chars)"_L1, {Text::characterCount(stored)});
    return stored;
}

std::vector<MemoryStore::Fact> MemoryStore::matching(const QString &description) const
{
    assertThread();
    const QString wanted = NoteText::normalized(description);
    std::vector<Fact> found;
    std::ranges::copy_if(m_facts, std::back_inserter(found), [&](const Fact &fact) {
        return NoteText::matches(NoteText::normalized(fact.text), wanted);
    });
    return found;
}

qsizetype MemoryStore::forget(const QString &description, const QString &chat)
{
    const std::vector<Fact> going = matching(description);
    if (going.empty())
        return 0;
    Receipt receipt{.id = QUuid::createUuid(), .chat = chat};
    QStringList texts;
    for (const Fact &fact : going) {
        const auto stood = static_cast<std::size_t>(find(fact.id) - m_facts.begin());
        receipt.forgotten.push_back({fact, stood + receipt.forgotten.size()}); // as if none had gone
        texts.append(fact.text);
        m_facts.erase(find(fact.id));
        removeReceiptsOf(fact.id);
    }
    receipt.text = texts.join(u" · "_s);
    keepReceipt(std::move(receipt));
    factsWereChanged();
    Log::info(category, "Memory: forgot %ld fact(s)"_L1, {going.size()});
    return std::ssize(going);
}

void MemoryStore::undo(const QUuid &receiptID)
{
    assertThread();
    const auto found = std::ranges::find(m_receipts, receiptID, &Receipt::id);
    if (found == m_receipts.end())
        return;
    const Receipt receipt = *found;
    dismiss(receiptID);
    if (!receipt.forgotten.empty())
        return bringBack(receipt.forgotten);
    const auto fact = find(receipt.factID);
    if (fact == m_facts.end())
        return;
    if (receipt.previousText)
        fact->text = *receipt.previousText;
    else
        m_facts.erase(fact);
    factsWereChanged();
    Log::info(category, "Memory: a save was undone"_L1);
}

void MemoryStore::bringBack(const std::vector<Forgotten> &forgotten)
{
    for (const auto &[fact, index] : forgotten) {
        const QString form = NoteText::normalized(fact.text);
        const bool isThere = std::ranges::any_of(
            m_facts, [&](const Fact &other) { return NoteText::normalized(other.text) == form; });
        if (!isThere && m_facts.size() < maxFacts)
            m_facts.insert(m_facts.begin() + std::ptrdiff_t(std::min(index, m_facts.size())), fact);
    }
    factsWereChanged();
    Log::info(category, "Memory: a forgetting was undone"_L1);
}

void MemoryStore::dismiss(const QUuid &receiptID)
{
    assertThread();
    if (std::erase_if(m_receipts, [&](const Receipt &receipt) { return receipt.id == receiptID; }) > 0)
        Q_EMIT receiptsChanged();
}

void MemoryStore::remove(const QUuid &factID)
{
    assertThread();
    const auto fact = find(factID);
    if (fact == m_facts.end())
        return;
    m_facts.erase(fact);
    removeReceiptsOf(factID);
    factsWereChanged();
}

void MemoryStore::update(const QUuid &factID, const QString &text)
{
    assertThread();
    const auto fact = find(factID);
    const QString stored = NoteText::stored(text);
    if (fact == m_facts.end() || stored.isEmpty() || stored == fact->text)
        return;
    fact->text = stored;
    removeReceiptsOf(fact->id);
    factsWereChanged();
}

void MemoryStore::clear()
{
    assertThread();
    m_facts.clear();
    m_receipts.clear();
    m_isConcealed = false;
    setReadability(false, false);
    Q_EMIT receiptsChanged();
    factsWereChanged();
    Log::info(category, "Memory: cleared at user request"_L1);
}

void MemoryStore::fold()
{
    assertThread();
    if (!m_directory.isEmpty())
        MemoryFold::run(m_directory, m_vault);
}

void MemoryStore::load()
{
    assertThread();
    if (m_directory.isEmpty())
        return;
    std::optional<QByteArray> contents;
    bool fileUnread = false;
    try {
        contents = PrivateFile::read(path(), MemoryFile::maxBytes);
    } catch (const FileError &) {
        fileUnread = true;
    }
    if (!contents) {
        setReadability(m_loadFailed, fileUnread);
        setFacts({});
        return;
    }
    const auto plain = m_vault.open(*contents);
    if (!plain) {
        setReadability(true, false);
        Log::error(category, "Memory: the notes file is sealed with a key this Mac no longer has"_L1);
        return;
    }
    setFacts(MemoryFile::notes(*plain).value_or(QStringList()));
    setReadability(false, false);
}

void MemoryStore::conceal()
{
    assertThread();
    if (m_directory.isEmpty())
        return;
    m_isConcealed = true;
    m_receipts.clear();
    Q_EMIT receiptsChanged();
    setFacts({});
}

void MemoryStore::readAnew()
{
    assertThread();
    m_isConcealed = false;
    setFacts({});
    fold();
    load();
}

MemoryStore::FactIterator MemoryStore::find(const QUuid &factID)
{
    return std::ranges::find(m_facts, factID, &Fact::id);
}

void MemoryStore::removeReceiptsOf(const QUuid &factID)
{
    if (std::erase_if(m_receipts, [&](const Receipt &receipt) { return receipt.factID == factID; }) > 0)
        Q_EMIT receiptsChanged();
}

void MemoryStore::setFacts(const QStringList &notes)
{
    const auto surplus = std::max<qsizetype>(0, notes.size() - static_cast<qsizetype>(maxFacts));
    m_facts.clear();
    for (const QString &note : notes.sliced(surplus))
        m_facts.push_back({QUuid::createUuid(), note, m_clock.now()});
    Q_EMIT factsChanged();
}

void MemoryStore::setReadability(bool loadFailed, bool fileUnread)
{
    if (m_loadFailed == loadFailed && m_fileUnread == fileUnread)
        return;
    m_loadFailed = loadFailed;
    m_fileUnread = fileUnread;
    Q_EMIT readabilityChanged();
}

void MemoryStore::factsWereChanged()
{
    write();
    Q_EMIT factsChanged();
}

// A file whose notes were never read is not replaced: they may yet be readable another time.
void MemoryStore::write() const
{
    if (m_directory.isEmpty() || isUnreadable())
        return;
    QStringList notes;
    for (const Fact &fact : m_facts)
        notes.append(fact.text);
    try {
        m_vault.writeSealed(MemoryFile::compose(notes), path());
    } catch (const std::exception &error) {
        Log::error(category, "Memory: could not write the notes file: %s"_L1, {error.what()});
    }
}

QString MemoryStore::path() const
{
    return m_directory + "/memory.md"_L1;
}

void MemoryStore::assertThread() const
{
    Q_ASSERT(QThread::currentThread() == thread());
}

} // namespace morvane
