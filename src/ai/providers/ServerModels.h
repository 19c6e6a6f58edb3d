#pragma once

#include "ai/contract/AIConfiguration.h"
#include "network/HttpSession.h"
#include "utils/text/ErrorFamily.h"

#include <QCoroTask>
#include <QStringList>

#include <stop_token>
#include <variant>

namespace morvane {

class Work;

// Why a server that answered gave no list of its models.
struct ModelListErrorCases {
    struct Refused {
        int statusCode;
        bool operator==(const Refused &) const = default;
    };
    enum class Plain { tooLarge, unreadable };
    using Case = std::variant<Refused, Plain>;
};

class ModelListError final : public ErrorFamily<ModelListErrorCases> {
public:
    using ErrorFamily::ErrorFamily;

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] bool isRetryable() const override { return true; }
};

// The models that a server of the chat-completions dialect offers ("GET …/models"), for a person to pick
// from. Ollama servers answer it as well.
namespace ServerModels {

// At most so many names are kept, each of at most 200 characters.
inline constexpr qsizetype mostNames = 10'000;

// Bytes of an answer. A service with thousands of models describes each in some two thousand.
inline constexpr qsizetype largestBody = qsizetype{16} * 1024 * 1024;

// Each name once, in order. Waits 20 seconds at most. A redirect is followed only to an address that the
// person could have entered. Throws ModelListError when the server has no list for us, ProviderError for a
// key that is refused and when no answer came. The answer is read on `work`. Both outlive the task.
[[nodiscard]] QCoro::Task<QStringList> list(HttpSessionProviding *network, Work *work,
                                            AIConfiguration configuration, std::stop_token stop);

// The names in a response body, whether it holds objects or bare names; nothing when it is no list of models.
[[nodiscard]] std::optional<QStringList> parse(QByteArrayView body);

} // namespace ServerModels

} // namespace morvane
