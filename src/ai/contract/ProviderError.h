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
    // The reply ended before its end; what had come of it stays.
    enum class ReplyBroken { endedEarly, serverError, filtered };
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
        modelNotListed, // among those of its server
        localModelRequired,
        hostedBurstLimited,
        contextTooLong,     // of the chat, for the model
        limitSpentThinking, // the reply's limit, before its first word
        replyTooLarge,      // past a limit of ours
        tooManyCalls,       // likewise
    };
    using Case = std::variant<InvalidBaseURL, InsecureBaseURL, ServerError, LocalSetupFailed, ModelError,
                              CloudModelInPrivateMode, EnclaveUnverified, PrivateCloudBusy,
                              PrivateCloudUnavailable, PrivateCloudCouldNotAnswer, ReplyBroken, Plain>;
};

class ProviderError final : public ErrorFamily<ProviderErrorCases> {
public:
    using ErrorFamily::ErrorFamily;

    // The error for a response status outside 200 to 299.
    [[nodiscard]] static ProviderError forStatus(int status);

    // The same with the server's words: one bounded line, never logged readable.
    [[nodiscard]] ProviderError quoting(QString words) const;

    // A server that may not support tools answered a request that carried some.
    [[nodiscard]] bool isToolRejection() const;
    // The private cloud was refused; a local model may answer instead.
    [[nodiscard]] bool isPrivateCloudFallback() const;

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] std::optional<QString> recoverySuggestion() const override;
    [[nodiscard]] bool isRetryable() const override;
    [[nodiscard]] QString quotedWords() const override { return m_serverWords; }

private:
    QString m_serverWords;
};

} // namespace morvane
