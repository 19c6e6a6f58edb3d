#include "services/DesktopActionError.h"
#include "services/ScreenGlanceError.h"
#include "services/WebAccessError.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

namespace {

using Plain = WebAccessError::Plain;
using Screen = ScreenGlanceError::Case;

std::string wordsOf(const UserPresentableError &error)
{
    return error.userMessage().toStdString() + "\n    " +
           error.recoverySuggestion().value_or(QStringLiteral("(no suggestion)")).toStdString() +
           (error.isRetryable() ? "\n    may be tried again\n" : "\n");
}

TEST(ServiceErrorsTest, SayTheAgreedWords)
{
    std::string words =
        wordsOf(WebAccessError(WebAccessError::FetchFailed{404})) +
        wordsOf(WebAccessError(WebAccessError::BlockedByBotProtection{QStringLiteral("a.example")}));
    for (const Plain plain :
         {Plain::emptyQuery, Plain::searchNotConfigured, Plain::searchKeyRejected, Plain::searchFailed,
          Plain::builtInSearchUnavailable, Plain::invalidURL, Plain::insecureURL, Plain::privateAddress,
          Plain::pageTooLarge, Plain::unreadablePage, Plain::offline, Plain::cancelled})
        words += wordsOf(WebAccessError(plain));
    for (const Screen screen : {Screen::permissionNeeded, Screen::needsRelaunch, Screen::captureFailed,
                                Screen::noTextFound, Screen::hiddenByFullScreen})
        words += wordsOf(ScreenGlanceError(screen));
    using Desktop = DesktopActionError;
    using Why = Desktop::ShortcutRefused::Why;
    const QString name = QStringLiteral("Tidy up");
    for (const Desktop::Case &desktop : std::initializer_list<Desktop::Case>{
             Desktop::DisallowedScheme{QStringLiteral("file")}, Desktop::ShortcutNotFound{name, {}},
             Desktop::ShortcutNotFound{name, {QStringLiteral("a"), QStringLiteral("b")}},
             Desktop::ShortcutTimedOut{name}, Desktop::ShortcutRefused{name, Why::leadsOut},
             Desktop::ShortcutRefused{name, Why::othersMayWriteIt},
             Desktop::ShortcutRefused{name, Why::othersMayWriteTheFolder},
             Desktop::Plain::shortcutsUnavailable, Desktop::Plain::shortcutFailed, Desktop::Plain::invalidURL,
             Desktop::Plain::openFailed, Desktop::Plain::openDismissed, Desktop::Plain::calendarAccessDenied,
             Desktop::Plain::calendarUnavailable, Desktop::Plain::calendarSaveFailed,
             Desktop::Plain::calendarEventInvalid, Desktop::Plain::calendarEventInPast})
        words += wordsOf(Desktop(desktop));
    EXPECT_EQ(words, TestData::text("services/errors.txt"));
}

} // namespace

} // namespace morvane
