#pragma once

#include "support/ServerProcess.h"

#include <QJsonObject>
#include <QTemporaryDir>

namespace morvane {

// The real release host of tools/runtime_host, and the folder through which it talks with the runtime that it
// gives out, whoever starts that.
class RuntimeHost {
public:
    // An archive by its name in the host's --list. Throws when the host doesn't come up.
    explicit RuntimeHost(const QString &archive = QStringLiteral("good"));
    ~RuntimeHost(); // ends what still runs of the runtime's processes

    // What --dev-runtime names: where to fetch the archive, its digest and size, and where the runtime
    // listens.
    [[nodiscard]] const QByteArray &developmentFile() const { return m_process.description(); }

    // How the archive comes from now on, by its name in the host's --list.
    void deliver(const QString &delivery) const;

    // What the runtime plays from now on; most is heeded at its start or at the next pull.
    void play(const QString &scenario) const;

    // What arrived at the host, the release page and its storage.
    [[nodiscard]] const std::vector<ServerProcess::Request> &requests() { return m_process.requests(); }

    // Where runtimes tell what they do and a bad archive tries to put "escaped"; "victim" lies there
    // untouched.
    [[nodiscard]] QString folder() const { return m_folder.path(); }
    [[nodiscard]] bool isUnharmed() const;

    // What runtimes told, oldest first: all of it, or the events of a name.
    [[nodiscard]] std::vector<QJsonObject> journal(const QString &event = {}) const;

    // Process ids of those that run now, a chat's helpers among them, each by its program's place in the
    // folder.
    [[nodiscard]] static std::vector<int> processesBelow(const QString &folder);

private:
    QTemporaryDir m_folder;
    ServerProcess m_process;
};

} // namespace morvane
