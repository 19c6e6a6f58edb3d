#include "services/DesktopActionError.h"

#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Error = DesktopActionError;
using Advice = std::optional<QString>;

constexpr qsizetype mostNames = 12;

QString device()
{
    return DesktopWords::here().device.toString();
}

QString place()
{
    return DesktopWords::here().shortcutsPlace.toString();
}

QString messageOf(const Error::DisallowedScheme &refused)
{
    return u"I only open web and email links, not “%1”."_s.arg(refused.scheme);
}

QString messageOf(const Error::ShortcutNotFound &missing)
{
    const QString message =
        u"There's no shortcut called “"_s + missing.name + u"” on this "_s + device() + u'.';
    if (missing.available.isEmpty())
        return message;
    const qsizetype more = missing.available.size() - mostNames;
    const QString names =
        missing.available.first(std::min(missing.available.size(), mostNames)).join(u", "_s);
    return message + u" You have: "_s + names + (more > 0 ? u", and %1 more"_s.arg(more) : QString());
}

QString messageOf(const Error::ShortcutTimedOut &hung)
{
    return u"The “"_s + hung.name + u"” shortcut didn't finish, so I stopped waiting for it."_s;
}

QString messageOf(const Error::ShortcutRefused &refused)
{
    switch (refused.why) {
    case Error::ShortcutRefused::Why::leadsOut:
        return u"“"_s + refused.name + u"” leads out of the Shortcuts folder, so I don't run it."_s;
    case Error::ShortcutRefused::Why::othersMayWriteIt:
        return u"Others on this "_s + device() + u" could change “"_s + refused.name +
               u"”, so I don't run it."_s;
    case Error::ShortcutRefused::Why::othersMayWriteTheFolder:
        return u"Others on this "_s + device() +
               u" could change what is in the Shortcuts folder, so I run nothing from it."_s;
    }
    return {};
}

QString messageOf(Error::Plain failure)
{
    switch (failure) {
    case Error::Plain::shortcutsUnavailable:
        return u"I couldn't reach the "_s + place() + u'.';
    case Error::Plain::shortcutFailed:
        return u"That shortcut stopped with an error."_s;
    case Error::Plain::invalidURL:
        return u"That isn't a web address I can open."_s;
    case Error::Plain::openFailed:
        return u"Nothing on this "_s + device() + u" would open that link."_s;
    case Error::Plain::openDismissed:
        return u"The link wasn't opened: no program was chosen for it."_s;
    case Error::Plain::calendarAccessDenied:
        return u"I don't have permission to add calendar events."_s;
    case Error::Plain::calendarUnavailable:
        return u"There's no default calendar to add events to."_s;
    case Error::Plain::calendarSaveFailed:
        return u"The event couldn't be saved."_s;
    case Error::Plain::calendarEventInvalid:
        return u"An event needs a title and a start time."_s;
    case Error::Plain::calendarEventInPast:
        return u"That start time has already passed."_s;
    }
    return {};
}

Advice adviceOn(const Error::DisallowedScheme &)
{
    return std::nullopt;
}

Advice adviceOn(const Error::ShortcutNotFound &missing)
{
    return missing.available.isEmpty()
               ? u"Create it in the %1 first, then ask me again."_s.arg(place())
               : u"Ask me for one of those, or open the %1 to check the exact name."_s.arg(place());
}

Advice adviceOn(const Error::ShortcutTimedOut &)
{
    return DesktopWords::here().shortcutHung.toString();
}

Advice adviceOn(const Error::ShortcutRefused &refused)
{
    switch (refused.why) {
    case Error::ShortcutRefused::Why::leadsOut:
        return u"Put the program itself into the folder."_s;
    case Error::ShortcutRefused::Why::othersMayWriteIt:
    case Error::ShortcutRefused::Why::othersMayWriteTheFolder:
        return u"Make it yours, and take the permission to write it from everybody else."_s;
    }
    return std::nullopt;
}

Advice adviceOn(Error::Plain failure)
{
    const DesktopWords &desktop = DesktopWords::here();
    if (failure == Error::Plain::shortcutsUnavailable)
        return u"Open the %1 once, then ask me again."_s.arg(place());
    if (failure == Error::Plain::calendarAccessDenied)
        return u"Turn on %1 in %2."_s.arg(Product::name, desktop.calendarSettings);
    if (failure == Error::Plain::calendarUnavailable)
        return u"Pick %1."_s.arg(desktop.calendarChooser);
    return std::nullopt;
}

} // namespace

QString DesktopActionError::userMessage() const
{
    return std::visit([](const auto &failure) { return messageOf(failure); }, reason());
}

std::optional<QString> DesktopActionError::recoverySuggestion() const
{
    return std::visit([](const auto &failure) { return adviceOn(failure); }, reason());
}

} // namespace morvane
