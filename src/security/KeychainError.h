#pragma once

#include "utils/text/UserPresentableError.h"

#include <cstdint>

namespace morvane {

// Why a keychain could not do it. The numbers are what the log and the error carry; they are the same
// whichever place stands behind the keychain.
enum class KeychainStatus : std::int32_t {
    InputOutput = -36,              // the place failed: a full disk, a broken reply
    Parameter = -50,                // the place cannot do this at all
    UserCancelled = -128,           // the person dismissed the prompt
    NotAvailable = -25291,          // no keychain is open yet, or none answers
    AuthenticationFailed = -25293,  // the person could not show who they are
    ItemNotFound = -25300,          // nothing is stored under this account
    InteractionNotAllowed = -25308, // it would take a prompt, and none was allowed
    Decode = -26275,                // what is stored is not a readable text
};

class KeychainError final : public UserPresentableError {
public:
    enum class Operation { Save, Read, Delete };

    KeychainError(Operation operation, KeychainStatus status);

    [[nodiscard]] Operation operation() const { return m_operation; }
    [[nodiscard]] KeychainStatus status() const { return m_status; }

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] std::optional<QString> recoverySuggestion() const override;
    [[nodiscard]] bool isRetryable() const override { return true; }

private:
    Operation m_operation;
    KeychainStatus m_status;
};

} // namespace morvane
