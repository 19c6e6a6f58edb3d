#pragma once

#include <QString>
#include <QUrl>

namespace morvane {

// Which addresses may be handed to the desktop: pages of the web and mail. Pure.
namespace DesktopLink {

// Throws DesktopActionError: invalidURL, or the scheme that is none of those.
[[nodiscard]] QUrl parsed(const QString &text);

// What would be opened, to the letter and in what a person can tell apart: no blanks, no letters that look
// like others.
[[nodiscard]] QString shown(const QUrl &url);

// Where it leads: the host of a page, or whom the mail is for; empty for mail to nobody yet.
[[nodiscard]] QString destination(const QUrl &url);

[[nodiscard]] bool isMail(const QUrl &url);

} // namespace DesktopLink

} // namespace morvane
