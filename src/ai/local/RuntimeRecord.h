#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <optional>
#include <stop_token>

namespace morvane {

// What an installed runtime consists of. Paths are relative to its folder.
struct RuntimeRecord {
    QString version;
    QMap<QString, QString> files; // path to SHA-256, lower-case hexadecimal
    QMap<QString, QString> links; // path to the target as it is written

    bool operator==(const RuntimeRecord &) const = default;

    [[nodiscard]] QByteArray json() const;
    [[nodiscard]] static std::optional<RuntimeRecord> parse(const QByteArray &json);

    // Everything in the folders "bin" and "lib" of `folder`, hashed. Throws FileError for what can't be read
    // or is neither file, folder nor link, and CancelledError.
    [[nodiscard]] static RuntimeRecord of(const QString &folder, const QString &version,
                                          const std::stop_token &stop);
};

} // namespace morvane
