#pragma once

#include "security/AbsentKeyring.h"
#include "security/KeychainHome.h"
#include "security/KeychainPreparation.h"
#include "security/KeychainService.h"
#include "utils/files/SupportFolders.h"

#include <memory>

namespace morvane {

// The program's secrets: the person's keyring, or a file of the profile where that is to stay apart.
class SecretKeeping {
public:
    enum class Keyring { ofThePerson, none };

    // Outlives the end of `work`.
    SecretKeeping(const SupportFolders &folders, Keyring keyring, Work &work);

    [[nodiscard]] KeychainPreparation &preparation() { return m_preparation; }
    [[nodiscard]] KeychainService &keychain() { return m_keychain; }

private:
    std::unique_ptr<SecretStoring> m_keyring;
    AbsentPresence m_presence;
    KeychainHome m_home;
    KeychainService m_keychain;
    KeychainPreparation m_preparation;
};

} // namespace morvane
