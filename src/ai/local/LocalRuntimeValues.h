#pragma once

#include "utils/files/SupportFolders.h"

#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace morvane {

// Where the local model's runtime comes from, lies and listens. Every place is a value, so that a trial may
// have all of it on loopback and in a folder of its own.
struct LocalRuntimeValues {
    struct Archive {
        QString name;                // "ollama-linux-amd64.tar.zst"
        QString sha256;              // 64 lower-case hexadecimal characters
        std::optional<qint64> bytes; // where it is published
    };

    QString version;
    QUrl releaseOrigin;             // scheme, host and port
    std::optional<Archive> archive; // none: nobody published one for this kind of machine, or its digest
    QUrl serverOrigin;              // http on this machine, with its port
    QStringList foundRuntimes;      // programs that the person may have installed, in order
    QString folder;                 // what is managed lies below it
    QString models;                 // where a runtime that this program starts keeps its models
    QString guard;                  // the program that a runtime runs under

    [[nodiscard]] QUrl archiveURL() const;
    [[nodiscard]] int port() const { return serverOrigin.port(80); }

    // Below `folder`.
    [[nodiscard]] QString binary() const { return folder + QStringLiteral("/bin/ollama"); }
    [[nodiscard]] QString libraries() const { return folder + QStringLiteral("/lib"); }
    [[nodiscard]] QString downloads() const { return folder + QStringLiteral("/downloads"); }
    [[nodiscard]] QString seal() const { return folder + QStringLiteral("/local-runtime.sealed"); }
    [[nodiscard]] QString pins() const { return folder + QStringLiteral("/model-pins.json"); }
    [[nodiscard]] QString setupLog() const { return folder + QStringLiteral("/local-ai-setup.log"); }

    // The deployment's, for this kind of machine.
    [[nodiscard]] static LocalRuntimeValues ofThisBuild(const SupportFolders &folders);

    // With what a development file names instead: "releaseOrigin" and "serverOrigin" (plain http on loopback,
    // with a port), "archive", "sha256", "bytes", "foundRuntimes" (absolute paths). Nothing when it names
    // anything else, or an origin that isn't on this machine.
    [[nodiscard]] std::optional<LocalRuntimeValues> withDevelopmentFile(QByteArrayView json) const;
};

} // namespace morvane
