#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <map>
#include <optional>
#include <set>

namespace morvane {

// What is remembered of signed lists for good: for each signing key the newest version that was accepted, and
// everything that was ever withdrawn. Only moves forward. A value.
struct VeniceMeasurementListAnchor {
    struct Mark {
        std::int64_t version = 0;
        QString sha256; // of the list file's bytes, lower-case hexadecimal

        bool operator==(const Mark &) const = default;
    };

    std::map<QString, Mark> marks; // by the standard base64 of a signing key's 32 bytes
    std::set<QString> revoked;     // identifiers of configurations

    // The mark of a signing key's bytes.
    [[nodiscard]] std::optional<Mark> markOf(const QByteArray &key) const;

    // The lowest version that may still be offered under that key; 0 when none was accepted yet.
    [[nodiscard]] std::int64_t floorOf(const QByteArray &key) const;

    // The anchor once a list under `key` with this mark and these withdrawals is accepted. The caller has
    // tested its version against the floor.
    [[nodiscard]] VeniceMeasurementListAnchor after(const QByteArray &key, const Mark &mark,
                                                    const std::set<QString> &withdrawn) const;

    // Its stored form is one JSON object. Nothing for a text that is not one by all its rules: what can't be
    // read in full must not count as empty.
    [[nodiscard]] QString json() const;
    [[nodiscard]] static std::optional<VeniceMeasurementListAnchor> read(const QString &json);

    bool operator==(const VeniceMeasurementListAnchor &) const = default;
};

} // namespace morvane
