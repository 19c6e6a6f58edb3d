#include "app/SecretKeeping.h"

#include "security/LocalDataVault.h"
#include "security/SecretServiceKeyring.h"
#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

std::unique_ptr<SecretStoring> SecretKeeping::keyringOfThePerson()
{
    return std::make_unique<SecretServiceKeyring>();
}

QString SecretKeeping::keyFilePath(const SupportFolders &folders)
{
    return folders.data + u'/' + Product::serviceName + u"/keychain.keys"_s;
}

SecretKeeping::SecretKeeping(const SupportFolders &folders, std::unique_ptr<SecretStoring> keyring,
                             Work &work, std::unique_ptr<UserPresenceConfirming> presence)
    : m_keyring(std::move(keyring))
    , m_presence(std::move(presence))
    , m_home(*m_keyring, keyFilePath(folders), LocalDataVault::keyAccount)
    , m_keychain(Product::serviceName, m_home, *m_presence)
    , m_preparation(Product::serviceName, m_home, m_keychain, work)
{}

} // namespace morvane
