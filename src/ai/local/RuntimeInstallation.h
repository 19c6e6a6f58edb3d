#pragma once

#include "ai/local/LocalRuntimeValues.h"

#include <QString>

#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>

namespace morvane {

class LocalDataVault;
class SetupLog;

// The runtime that the program installed: its files, and a sealed record of their digests, without which none
// of them runs. For a thread of Work, one call at a time.
class RuntimeInstallation {
public:
    // `vault` outlives the object and its copies.
    RuntimeInstallation(LocalRuntimeValues values, const LocalDataVault &vault,
                        std::shared_ptr<SetupLog> log);

    // Whether there is something to be checked and started.
    [[nodiscard]] bool exists() const;

    // Unpacks a proven archive beside the place, records what came out, and only then puts it there. What is
    // left when it breaks off is no runtime. Throws LocalSetupError, CancelledError.
    void install(const QString &archive, const std::stop_token &stop) const;

    // Whether each file is the one that was installed, and no other lies among them: the runtime loads what
    // it finds beside it. What isn't so is deleted, with a line in both logs. A record that can't be opened
    // now (the vault is locked, or its key isn't there) is no reason to delete: then nothing runs, and
    // LocalSetupError says why. Throws CancelledError as well.
    [[nodiscard]] bool verify(const std::stop_token &stop) const;

    // What the record says, and a new one that says it under the vault's present key: with its key gone no
    // record opens, and the runtime would have to be fetched again. Nothing where there is none that opens.
    [[nodiscard]] std::optional<QByteArray> record() const;
    void keepRecord(const QByteArray &contents) const;

    void remove() const;

    // What an installation that broke off left behind.
    void removeLeftovers() const;

private:
    [[nodiscard]] QString staging() const { return m_values.folder + QStringLiteral("/runtime.staging"); }

    LocalRuntimeValues m_values;
    const LocalDataVault *m_vault;
    std::shared_ptr<SetupLog> m_log;
    std::shared_ptr<std::mutex> m_turn = std::make_shared<std::mutex>();
};

} // namespace morvane
