#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace morvane {

// Readers that never coerce: a value of another type reads as absent, and so does null.
namespace Json {

// The top-level object of a UTF-8 JSON text. Nothing for invalid JSON or another top level.
[[nodiscard]] std::optional<QJsonObject> parseObject(QByteArrayView utf8);

[[nodiscard]] std::optional<QString> string(const QJsonObject &object, QLatin1StringView key);
[[nodiscard]] std::optional<bool> boolean(const QJsonObject &object, QLatin1StringView key);
[[nodiscard]] std::optional<double> number(const QJsonObject &object, QLatin1StringView key);

// A number without a fractional part that fits 64 bits.
[[nodiscard]] std::optional<std::int64_t> integer(const QJsonObject &object, QLatin1StringView key);

[[nodiscard]] std::optional<QJsonObject> object(const QJsonObject &object, QLatin1StringView key);
[[nodiscard]] std::optional<QJsonArray> array(const QJsonObject &object, QLatin1StringView key);

// An array of which every element is an object; one element of another type makes the whole absent.
[[nodiscard]] std::optional<std::vector<QJsonObject>> objects(const QJsonObject &object,
                                                              QLatin1StringView key);

} // namespace Json

} // namespace morvane
