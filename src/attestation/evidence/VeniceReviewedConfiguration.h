#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

namespace morvane {

// A server configuration that was read and approved. Servers of one deployment differ only in a host label in
// the middle of the text, so the bytes before and behind it are pinned and the label is left open.
struct VeniceReviewedConfiguration {
    QString id; // unique within a list
    QString label;
    std::int64_t prefixLength = 0; // bytes
    QString prefixSHA256;          // hexadecimal
    std::int64_t suffixLength = 0;
    QString suffixSHA256;

    // What lies between the pinned parts of `text`, not yet judged. Nothing when `text` has other ends or
    // leaves no byte between them.
    [[nodiscard]] std::optional<QByteArray> hostLabelBytes(QByteArrayView text) const;

    // 1 to 32 bytes of lower-case letters, digits and hyphens that don't begin with a hyphen.
    [[nodiscard]] static bool isAllowedHostLabel(QByteArrayView label);

    // The register that a server started with `text` must show: 48 bytes.
    [[nodiscard]] static QByteArray expectedMrconfigid(QByteArrayView text);

    bool operator==(const VeniceReviewedConfiguration &) const = default;
};

} // namespace morvane
