#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>

namespace morvane {

// Counts how often memory that holds a secret is wiped: afterwards nobody can tell a wiped copy from a
// forgotten one. One at a time; any thread may wipe.
class WipeSpy {
public:
    // Noticed as UTF-8 and as UTF-16.
    explicit WipeSpy(const QString &secret);
    ~WipeSpy();
    WipeSpy(const WipeSpy &) = delete;
    WipeSpy &operator=(const WipeSpy &) = delete;

    // Since it was last asked.
    [[nodiscard]] int takeCount() { return m_count.exchange(0); }

    // For the wrapped call.
    void note(QByteArrayView memory);

private:
    QByteArray m_narrow;
    QByteArray m_wide;
    std::atomic<int> m_count = 0;
};

} // namespace morvane
