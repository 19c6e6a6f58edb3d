#pragma once

#include <QStringList>

namespace morvane {

// Which languages the screen is read in.
namespace ScreenLanguages {

// The codes of the recogniser's language data, best first, for the languages that a person reads in, such as
// "de-CH" (QLocale::uiLanguages). English comes last, since what programs write is often English. Two at
// most: each one more is that much more work on every word.
[[nodiscard]] QStringList codesFor(const QStringList &uiLanguages);

} // namespace ScreenLanguages

} // namespace morvane
