#pragma once

#include "security/AbsentKeyring.h"
#include "security/KeychainHome.h"
#include "security/KeychainPreparation.h"
#include "security/KeychainService.h"
#include "utils/files/SupportFolders.h"

#include <memory>

namespace morvane {

// The program's secrets: in a keyring, or in a file where there is none.
class SecretKeeping {
public:
    // Outlives the end of `work`.
    SecretKeeping(const SupportFolders &folders, std::unique_ptr<SecretStoring> keyring, Work &work);

    [[nodiscard]] static std::unique_ptr<SecretStoring> keyringOfThePerson();
    [[nodiscard]] static QString keyFilePath(const SupportFolders &folders);

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
