#pragma once

#include "security/AbsentKeyring.h"
#include "security/KeychainHome.h"
#include "security/KeychainPreparation.h"
#include "security/KeychainService.h"
#include "security/UserPresenceConfirming.h"
#include "utils/files/SupportFolders.h"

#include <memory>

namespace morvane {

// The program's secrets: in a keyring, or in a file where there is none.
class SecretKeeping {
public:
    // Outlives the end of `work`. Without `presence` nobody can be asked.
    SecretKeeping(const SupportFolders &folders, std::unique_ptr<SecretStoring> keyring, Work &work,
                  std::unique_ptr<UserPresenceConfirming> presence = std::make_unique<AbsentPresence>());

    [[nodiscard]] static std::unique_ptr<SecretStoring> keyringOfThePerson();
    [[nodiscard]] static QString keyFilePath(const SupportFolders &folders);

    [[nodiscard]] KeychainPreparation &preparation() { return m_preparation; }
    [[nodiscard]] KeychainService &keychain() { return m_keychain; }
    [[nodiscard]] UserPresenceConfirming &presence() { return *m_presence; }

private:
    std::unique_ptr<SecretStoring> m_keyring;
    std::unique_ptr<UserPresenceConfirming> m_presence;
    KeychainHome m_home;
    KeychainService m_keychain;
    KeychainPreparation m_preparation;
};

} // namespace morvane
