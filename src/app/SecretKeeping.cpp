#include "app/SecretKeeping.h"

#include "security/LocalDataVault.h"
#include "security/SecretServiceKeyring.h"
#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<SecretStoring> makeKeyring(SecretKeeping::Keyring keyring)
{
    if (keyring == SecretKeeping::Keyring::none)
        return std::make_unique<AbsentKeyring>();
    return std::make_unique<SecretServiceKeyring>();
}

QString keyFilePath(const SupportFolders &folders)
{
    return folders.data + u'/' + Product::serviceName + u"/keychain.keys"_s;
}

} // namespace

SecretKeeping::SecretKeeping(const SupportFolders &folders, Keyring keyring, Work &work)
    : m_keyring(makeKeyring(keyring))
    , m_home(*m_keyring, keyFilePath(folders), LocalDataVault::keyAccount)
    , m_keychain(Product::serviceName, m_home, m_presence)
    , m_preparation(Product::serviceName, m_home, m_keychain, work)
{}

} // namespace morvane
