#include "services/WebAccessError.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString messageOf(const WebAccessError::FetchFailed &failure)
{
    return u"That page returned an error (%1)."_s.arg(failure.statusCode);
}

QString messageOf(const WebAccessError::BlockedByBotProtection &failure)
{
    return u"%1 blocks automated readers."_s.arg(failure.host);
}

QString messageOf(WebAccessError::Plain failure)
{
    switch (failure) {
    case WebAccessError::Plain::emptyQuery:
        return u"I need something to search for."_s;
    case WebAccessError::Plain::searchNotConfigured:
        return u"Web search isn't set up yet."_s;
    case WebAccessError::Plain::searchKeyRejected:
        return u"The search service rejected that key."_s;
    case WebAccessError::Plain::searchFailed:
        return u"The search didn't come back."_s;
    case WebAccessError::Plain::builtInSearchUnavailable:
        return u"The built-in search service couldn't be reached."_s;
    case WebAccessError::Plain::invalidURL:
        return u"That doesn't look like a web address."_s;
    case WebAccessError::Plain::insecureURL:
        return u"I only open secure (https) pages."_s;
    case WebAccessError::Plain::privateAddress:
        return u"That address is on a private network, which can't be read from here."_s;
    case WebAccessError::Plain::pageTooLarge:
        return u"That page is too large to read."_s;
    case WebAccessError::Plain::unreadablePage:
        return u"I couldn't find readable text on that page."_s;
    case WebAccessError::Plain::offline:
        return u"I couldn't reach the internet."_s;
    case WebAccessError::Plain::cancelled:
        return {};
    }
    return {};
}

} // namespace

QString WebAccessError::userMessage() const
{
    return std::visit([](const auto &failure) { return messageOf(failure); }, reason());
}

std::optional<QString> WebAccessError::recoverySuggestion() const
{
    if (is(Plain::searchNotConfigured))
        return u"Add a search API key in Settings → Abilities to let me look things up."_s;
    if (is(Plain::searchKeyRejected))
        return u"Check the key in Settings → Abilities."_s;
    if (is(Plain::searchFailed))
        return u"Try again in a moment."_s;
    if (is(Plain::builtInSearchUnavailable))
        return u"Try again in a moment, or add your own free search key in Settings → Abilities."_s;
    return std::nullopt;
}

bool WebAccessError::isRetryable() const
{
    return is(Plain::searchFailed) || is(Plain::builtInSearchUnavailable) || is(Plain::offline) ||
           std::holds_alternative<FetchFailed>(reason());
}

} // namespace morvane
