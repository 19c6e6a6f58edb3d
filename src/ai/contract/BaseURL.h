#pragma once

#include <QString>
#include <QUrl>

// Checks of a model server's base address.
namespace BaseURL {

// https to any host; http only to localhost and private-network addresses. Throws
// ProviderError::invalidBaseURL or insecureBaseURL, both naming or following the text as it was given.
[[nodiscard]] QUrl validated(const QString &text);

// The validated address, with "chat/completions" appended unless its path already holds that.
[[nodiscard]] QUrl chatCompletions(const QString &text);

} // namespace BaseURL
