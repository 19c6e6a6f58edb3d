#pragma once

#include "services/LoginStarting.h"

#include <QFileSystemWatcher>
#include <QString>

namespace morvane {

// The session's own list of programs: a desktop entry in the folder autostart/ of the person's configuration
// (Desktop Application Autostart, version 0.5). Others may edit or remove it, so it is read each time, and
// counts as on only when a session would start this very program.
class AutostartEntry final : public LoginStarting {
public:
    // `folder` holds the person's configuration; `program` is the absolute path of what is started.
    AutostartEntry(const QString &folder, QString program, QObject *parent = nullptr);

    [[nodiscard]] bool isOn() override;
    [[nodiscard]] bool set(bool on) override;

private:
    [[nodiscard]] QByteArray entry() const;
    [[nodiscard]] bool startsUs(const QString &commandLine) const;
    void watch();

    const QString m_folder;
    const QString m_path;
    const QString m_program;
    QFileSystemWatcher m_watcher; // of nothing until somebody has looked
};

} // namespace morvane
