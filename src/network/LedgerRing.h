#pragma once

#include <QUuid>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace morvane {

// The newest rows of a ledger, in memory only. A row has an `id`, and never changes once it is here.
//
// Any thread may call any member.
template <typename Row>
class LedgerRing {
public:
    struct Snapshot {
        std::vector<Row> entries;   // oldest first
        std::uint64_t revision = 0; // rises by one on every change
    };

    // Beyond `capacity` rows, the oldest of those that `mayGo` lets go are dropped; absent lets every row.
    explicit LedgerRing(std::size_t capacity, bool (*mayGo)(const Row &) = nullptr)
        : m_capacity(capacity)
        , m_mayGo(mayGo)
    {}

    // The row's id.
    QUuid append(Row row)
    {
        const QUuid id = row.id;
        const std::scoped_lock lock(m_mutex);
        m_rows.push_back(std::move(row));
        trim();
        ++m_revision;
        return id;
    }

    void clear()
    {
        const std::scoped_lock lock(m_mutex);
        m_rows.clear();
        ++m_revision;
    }

    // Nothing for a row that has gone or never was.
    [[nodiscard]] std::optional<Row> find(const QUuid &id) const
    {
        const std::scoped_lock lock(m_mutex);
        const auto found =
            std::find_if(m_rows.rbegin(), m_rows.rend(), [&id](const Row &row) { return row.id == id; });
        return found == m_rows.rend() ? std::nullopt : std::optional(*found);
    }

    // Rows and revision of one moment, so a view that compares revisions never shows older rows under a
    // newer number.
    [[nodiscard]] Snapshot snapshot() const
    {
        const std::scoped_lock lock(m_mutex);
        return {m_rows, m_revision};
    }

private:
    void trim()
    {
        if (m_rows.size() <= m_capacity)
            return;
        std::size_t surplus = m_rows.size() - m_capacity;
        std::erase_if(m_rows, [&](const Row &row) {
            if (surplus == 0 || (m_mayGo && !m_mayGo(row)))
                return false;
            --surplus;
            return true;
        });
    }

    std::size_t m_capacity;
    bool (*m_mayGo)(const Row &);
    mutable std::mutex m_mutex;
    std::vector<Row> m_rows;      // guarded by m_mutex
    std::uint64_t m_revision = 0; // guarded by m_mutex
};

} // namespace morvane
