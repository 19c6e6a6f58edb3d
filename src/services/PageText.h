#pragma once

#include <QString>

namespace morvane {

// What a person would read of a page: its title and the text of its main part, without markup. Pure, in
// linear time; any thread.
namespace PageText {

// UTF-8 when the whole body is, else ISO Latin 1.
[[nodiscard]] QString decoded(const QByteArray &body);

// Empty when the page has none.
[[nodiscard]] QString title(const QString &html);

// One line for each block; empty lines are left out.
[[nodiscard]] QString text(QString html);

// A title or a snippet without its tags.
[[nodiscard]] QString withoutTags(QString text);

// Whether the page is one that a site shows to programs in place of its own.
[[nodiscard]] bool isBotWall(const QString &title, const QString &text);

} // namespace PageText

} // namespace morvane
