#pragma once

#include <QString>
#include <QUrl>

namespace morvane {

// Checks of a model server's base address.
namespace BaseURL {

// https to any host; http only to hosts that are near by their text. Throws
// ProviderError::invalidBaseURL or insecureBaseURL, both naming or following the text as it was given.
[[nodiscard]] QUrl validated(const QString &text);

// The validated address, with "chat/completions" appended unless its path already holds that.
[[nodiscard]] QUrl chatCompletions(const QString &text);

// Where the same server lists its models: "models" beside the endpoint, whether the address names that or
// not.
[[nodiscard]] QUrl models(const QString &text);

// Whom a key is for: "https://host" of the validated address, with the port unless it is the scheme's own.
// Empty for an address that can't be used.
[[nodiscard]] QString origin(const QString &text);

// The validated address with this path in place of its own path and query. `path` has no leading slash.
[[nodiscard]] QUrl withPath(const QString &text, QLatin1StringView path);

// A redirect may lead there: the person could have entered the address, so a conversation isn't led on to one
// that is open to everybody on the way; what is asked of a host nearby is answered nearby; and no public
// place that speaks https leads to plain http, wherever that is.
[[nodiscard]] bool mayRedirect(const QUrl &from, const QUrl &to);

} // namespace BaseURL

} // namespace morvane
