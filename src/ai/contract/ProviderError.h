#pragma once

#include "utils/text/ErrorFamily.h"

#include <variant>

namespace morvane {

// Why a provider could not answer. The cases carry what their words need.
struct ProviderErrorCases {
    struct InvalidBaseURL {
        QString text;
        bool operator==(const InvalidBaseURL &) const = default;
    };
    struct InsecureBaseURL {
        QString text;
        bool operator==(const InsecureBaseURL &) const = default;
    };
    struct ServerError {
        int statusCode;
        bool operator==(const ServerError &) const = default;
    };
    struct LocalSetupFailed {
        QString text;
        bool operator==(const LocalSetupFailed &) const = default;
    };
    struct ModelError {
        QString text;
        bool operator==(const ModelError &) const = default;
    };
    struct CloudModelInPrivateMode {
        QString model;
        bool operator==(const CloudModelInPrivateMode &) const = default;
    };
    struct EnclaveUnverified {
        QString text;
        bool operator==(const EnclaveUnverified &) const = default;
    };
    struct PrivateCloudBusy {
        QString text;
        bool operator==(const PrivateCloudBusy &) const = default;
    };
    struct PrivateCloudUnavailable {
        int statusCode;
        bool operator==(const PrivateCloudUnavailable &) const = default;
    };
    struct PrivateCloudCouldNotAnswer {
        QString text;
        bool operator==(const PrivateCloudCouldNotAnswer &) const = default;
    };
    enum class Plain {
        notConfigured,
        authenticationFailed,
        rateLimited,
        networkTimeout,
        networkUnavailable,
        malformedResponse,
        cancelled,
        emptyResponse,
        modelLacksVision,
        localModelRequired,
        hostedBurstLimited,
    };
    using Case = std::variant<InvalidBaseURL, InsecureBaseURL, ServerError, LocalSetupFailed, ModelError,
                              CloudModelInPrivateMode, EnclaveUnverified, PrivateCloudBusy,
                              PrivateCloudUnavailable, PrivateCloudCouldNotAnswer, Plain>;
};

class ProviderError final : public ErrorFamily<ProviderErrorCases> {
public:
    using ErrorFamily::ErrorFamily;

    // The error for a response status outside 200 to 299.
    [[nodiscard]] static ProviderError forStatus(int status);

    // A server that may not support tools answered a request that carried some.
    [[nodiscard]] bool isToolRejection() const;
    // The private cloud was refused; a local model may answer instead.
    [[nodiscard]] bool isPrivateCloudFallback() const;

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] std::optional<QString> recoverySuggestion() const override;
    [[nodiscard]] bool isRetryable() const override;
};

} // namespace morvane
