#pragma once

#include "security/LocalDataVault.h"
#include "utils/files/SupportFolders.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>
#include <variant>

namespace morvane {

// The last accepted list as it came, sealed in one file. Files are read and written under the vault's lock;
// any thread, one call at a time.
class VeniceMeasurementListStore {
public:
    static const QString fileName;            // "accepted-servers.sealed"
    static const QString developmentFileName; // "accepted-servers-dev.sealed"
    static const QString formerFileName;      // an older build's, that was neither signed nor sealed

    struct State {
        std::optional<QByteArray> list;
        std::optional<QByteArray> signature;
        std::optional<QDateTime> lastFetchAt; // of the last attempt, whatever came of it

        bool operator==(const State &) const = default;
    };
    struct Locked {};
    using Loaded = std::variant<State, Locked>;

    [[nodiscard]] static QString defaultDirectory(const SupportFolders &folders);

    // What older builds left, once nothing of it is in use: their sealed lists go to the directory above,
    // unless there are some, and the list that was read without a signature is deleted. Never throws.
    static void settleFormerFiles(const SupportFolders &folders);

    // Without a directory nothing is kept. `vault` outlives the store.
    VeniceMeasurementListStore(const LocalDataVault &vault, std::optional<QString> directory,
                               QString name = fileName);

    // The empty state for a missing file, and for one that isn't sealed by this key or holds something else.
    [[nodiscard]] Loaded load() const;

    // What can't be written is gone with the process: the list is asked for again then.
    void save(const State &state) const;

private:
    [[nodiscard]] QString path() const;

    const LocalDataVault &m_vault;
    std::optional<QString> m_directory;
    QString m_name;
};

} // namespace morvane
