#pragma once

#include <functional>
#include <utility>

namespace morvane {

// How a model tells its views of a row that comes or goes, before and after.
struct LedgerTelling {
    std::function<void(int row)> beginRemove;
    std::function<void()> endRemove;
    std::function<void(int count)> beginInsertOnTop;
    std::function<void()> endInsert;
    std::function<void()> beginReset; // of what becomes empty
    std::function<void()> endReset;
};

// A ledger's rows as a view shows them, newest first. Brings them up to a newer snapshot row by row, so that
// the one that is read or open stays where it is.
template <typename Snapshot>
class LedgerRows {
public:
    using Row = typename decltype(Snapshot::entries)::value_type;

    [[nodiscard]] int count() const { return static_cast<int>(m_shown.entries.size()); }
    [[nodiscard]] const Row &at(int row) const { return *(m_shown.entries.rbegin() + row); }
    [[nodiscard]] bool isUpTo(const Snapshot &snapshot) const
    {
        return snapshot.revision == m_shown.revision;
    }

    void take(Snapshot snapshot, const LedgerTelling &telling)
    {
        if (snapshot.entries.empty()) {
            telling.beginReset();
            m_shown = std::move(snapshot);
            telling.endReset();
            return;
        }
        dropMissingIn(snapshot, telling);
        const int fresh = static_cast<int>(snapshot.entries.size()) - count();
        if (fresh > 0)
            telling.beginInsertOnTop(fresh);
        m_shown = std::move(snapshot);
        if (fresh > 0)
            telling.endInsert();
    }

private:
    // A ledger only ever loses rows and gains some at its end.
    void dropMissingIn(const Snapshot &snapshot, const LedgerTelling &telling)
    {
        auto &shown = m_shown.entries;
        std::size_t kept = 0;
        while (kept < shown.size()) {
            if (kept < snapshot.entries.size() && shown[kept].id == snapshot.entries[kept].id) {
                ++kept;
                continue;
            }
            telling.beginRemove(static_cast<int>(shown.size() - 1 - kept));
            shown.erase(shown.begin() + static_cast<std::ptrdiff_t>(kept));
            telling.endRemove();
        }
    }

    Snapshot m_shown;
};

} // namespace morvane
