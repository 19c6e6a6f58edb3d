#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

class SettingsRepository;
struct SupportFolders;

// The reports of crashes that lie on this machine: where they lie, and reading and deleting them. They are
// never sent. Main thread.
class CrashReportService {
public:
    static constexpr int kept = 5; // the newest

    // `defaults` remembers which report the person was told of, and outlives this.
    CrashReportService(QString folder, SettingsRepository &defaults);

    [[nodiscard]] static QString folderIn(const SupportFolders &folders);

    // Their names, the newest first.
    [[nodiscard]] QStringList reports() const;
    // Empty for one that can't be read; cut where it is longer than any the program writes.
    [[nodiscard]] QString text(const QString &name) const;
    void remove(const QString &name);
    void removeAll();

    // The newest one, when it came since the last call; empty otherwise. Each is given out once.
    [[nodiscard]] QString takeUntold();

private:
    const QString m_folder;
    SettingsRepository &m_defaults;
};

} // namespace morvane
