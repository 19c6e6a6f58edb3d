#include "security/SealingTrouble.h"

#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

QString sentenceFor(SealingTrouble trouble)
{
    switch (trouble) {
    case SealingTrouble::None:
        return {};
    case SealingTrouble::KeychainLocked:
        return u"The keyring that holds the key to your data is locked. What you write is stored readable on "
               "this computer until the keyring is open again, and sealed then."_s;
    case SealingTrouble::KeychainSilent:
        return u"The key to your data can't be read just now. What you write is stored readable on this "
               "computer until it can, and sealed then."_s;
    case SealingTrouble::KeyMissing:
        return u"The key to your data is gone, or is no key any more. What you write is stored readable on "
               "this computer. Quit %1 and start it again to choose what to do."_s.arg(Product::name);
    case SealingTrouble::Failed:
        return u"Sealing failed. What you write is stored readable on this computer until it works again, "
               "and sealed then."_s;
    }
    return {};
}

} // namespace morvane
