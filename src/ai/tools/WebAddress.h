#pragma once

#include <QUrl>

#include <optional>

namespace morvane {

// Web addresses as the abilities compare them.
namespace WebAddress {

// The address that a text stands for, blanks and line ends around it aside. Nothing when it is none.
[[nodiscard]] std::optional<QUrl> parse(const QString &text);

// Two addresses with the same normalised form count as the same page: the absolute text in lower case,
// without one "/" at its end.
[[nodiscard]] QString normalised(const QUrl &url);

// In lower case; empty for none.
[[nodiscard]] QString host(const QUrl &url);

// The words of an address that may name what its page is about, for a search that takes the place of reading
// it.
[[nodiscard]] std::optional<QString> searchQuery(const QUrl &url);

} // namespace WebAddress

} // namespace morvane
