#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace morvane {

// Addresses below the base address of the private cloud.
namespace VeniceEndpoint {

// The base address with `name` as one more component of its path, without its query. Nothing for a base
// address that can't be read or has no host.
[[nodiscard]] std::optional<QUrl> url(const QString &baseURLString, const QString &name);

} // namespace VeniceEndpoint

} // namespace morvane
