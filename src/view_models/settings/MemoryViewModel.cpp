#include "view_models/settings/MemoryViewModel.h"

#include "utils/text/DesktopWords.h"
#include "utils/text/Identifier.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

MemoryViewModel::MemoryViewModel(MemoryStore &memory, QObject *parent)
    : QAbstractListModel(parent)
    , m_memory(memory)
    , m_facts(memory.facts())
{
    connect(&memory, &MemoryStore::factsChanged, this, &MemoryViewModel::refresh);
    connect(&memory, &MemoryStore::readabilityChanged, this, &MemoryViewModel::problemChanged);
}

QString MemoryViewModel::problem() const
{
    if (m_memory.loadFailed())
        return u"Your notes are sealed with a key this %1 no longer has. Clear them to start over."_s.arg(
            DesktopWords::here().device);
    if (m_memory.isUnreadable())
        return u"The file with your notes can't be read, so no note is used or saved. Quit and open the app "
               "again once it can be, or clear the notes to start over."_s;
    return {};
}

// Where the same notes stand in the same order only their words are drawn anew, so an edit keeps its place.
void MemoryViewModel::refresh()
{
    const auto &facts = m_memory.facts();
    const bool sameNotes = std::equal(facts.begin(), facts.end(), m_facts.begin(), m_facts.end(),
                                      [](const auto &a, const auto &b) { return a.id == b.id; });
    if (sameNotes) {
        m_facts = facts;
        if (!m_facts.empty())
            Q_EMIT dataChanged(index(0), index(rowCount() - 1), {NoteRole});
        return;
    }
    beginResetModel();
    m_facts = facts;
    endResetModel();
    Q_EMIT countChanged();
}

int MemoryViewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_facts.size());
}

QHash<int, QByteArray> MemoryViewModel::roleNames() const
{
    return {{FactIdRole, "factId"}, {NoteRole, "note"}};
}

QVariant MemoryViewModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const MemoryStore::Fact &fact = m_facts[m_facts.size() - 1 - static_cast<std::size_t>(index.row())];
    switch (role) {
    case FactIdRole:
        return Identifier::text(fact.id);
    case NoteRole:
        return fact.text;
    default:
        return {};
    }
}

void MemoryViewModel::update(const QString &factId, const QString &text)
{
    m_memory.update(QUuid::fromString(factId), text);
}

void MemoryViewModel::remove(const QString &factId)
{
    m_memory.remove(QUuid::fromString(factId));
}

void MemoryViewModel::clear()
{
    m_memory.clear();
}

} // namespace morvane
