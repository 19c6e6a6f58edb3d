#include "security/KeychainState.h"

#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Before there is anything to open.
QString firstSentenceFor(KeychainState state)
{
    const QString fact = state == KeychainState::Locked
                             ? u"%1 keeps the key to your chats in the keyring, which is still locked."_s
                             : u"%1 keeps the key to your chats in the keyring, which does not answer."_s;
    return fact.arg(Product::name) +
           u" The key can also be kept in a file that only your account can read."_s;
}

} // namespace

bool isReady(KeychainState state)
{
    return state == KeychainState::Ready || state == KeychainState::ReadyInFile;
}

bool canRetry(KeychainState state)
{
    switch (state) {
    case KeychainState::Locked:
    case KeychainState::Unavailable:
    case KeychainState::KeyMissing:
    case KeychainState::KeyUnusable:
    case KeychainState::FileUnreadable:
        return true;
    case KeychainState::Opening:
    case KeychainState::WaitingForUnlock:
    case KeychainState::Ready:
    case KeychainState::ReadyInFile:
        return false;
    }
    return false;
}

bool canStartAfresh(KeychainState state, KeyExpectation expectation)
{
    return canRetry(state) &&
           (expectation == KeyExpectation::MustExist || state == KeychainState::FileUnreadable);
}

bool canUseFile(KeychainState state, KeyExpectation expectation)
{
    return expectation == KeyExpectation::Unknown &&
           (state == KeychainState::Locked || state == KeychainState::Unavailable);
}

QString sentenceFor(KeychainState state, KeyExpectation expectation)
{
    if (canUseFile(state, expectation))
        return firstSentenceFor(state);
    switch (state) {
    case KeychainState::Opening:
    case KeychainState::Ready:
        return {};
    case KeychainState::WaitingForUnlock:
        return u"%1 is waiting for your desktop to unlock the keyring."_s.arg(Product::name);
    case KeychainState::ReadyInFile:
        return u"No keyring is in use on this computer, so the key to your data is kept in a file that only "
               "your account can read."_s;
    case KeychainState::Locked:
        return u"The keyring is still locked, so %1 cannot open your chats yet."_s.arg(Product::name);
    case KeychainState::Unavailable:
        return u"The keyring that holds the key to your data does not answer, so your chats stay closed and "
               "unchanged."_s;
    case KeychainState::KeyMissing:
        return u"The key to your data is no longer in the keyring, so your chats cannot be read; they are "
               "still there, and nothing was overwritten."_s;
    case KeychainState::KeyUnusable:
        return u"What stands in the place of the key to your data is no key, so your chats cannot be read; "
               "they are still there, and nothing was overwritten."_s;
    case KeychainState::FileUnreadable:
        return u"The file that stands in for a keyring cannot be used, so your chats stay closed and "
               "unchanged."_s;
    }
    return {};
}

} // namespace morvane
