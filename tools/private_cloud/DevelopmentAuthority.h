#pragma once

#include "evidence/TestAuthority.h"

#include <QJsonObject>

namespace morvane {

// The authority that is compiled into this program, and what a build must be told so that it believes it.
namespace DevelopmentAuthority {

[[nodiscard]] const EvidenceAuthority &authority();

// A server of its own that proves itself well: everything but the model, the nonce and the key is fixed, so
// that a build can accept it by name.
[[nodiscard]] Scenario server();

// The image that such a server is on once it was brought up to date: no build accepts it by itself.
[[nodiscard]] QByteArray newerImage(); // 48 bytes, its MRTD

// The model that a build accepts without any list.
inline constexpr QLatin1StringView builtInModel{"e2ee-glm-5-3-flash"};
inline constexpr QLatin1StringView builtInID{"development.built-in"};

// A server as an entry of a signed list, on its usual image and on the newer one.
[[nodiscard]] QJsonObject listEntry(const QString &id, const QString &model);
[[nodiscard]] QJsonObject newerListEntry(const QString &id, const QString &model);

// The authority's values for deployment/development.json.
[[nodiscard]] QJsonObject deploymentValues();

} // namespace DevelopmentAuthority

} // namespace morvane
