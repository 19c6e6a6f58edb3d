#pragma once

#include "utils/text/ErrorFamily.h"

#include <variant>

namespace morvane {

// Why a document or a picture could not be taken over. The cases carry what their words need.
struct DocumentErrorCases {
    struct UnsupportedType {
        QString extension; // without its dot; "unknown" for none
        bool operator==(const UnsupportedType &) const = default;
    };
    struct FileTooLarge {
        qint64 sizeBytes;
        qint64 limitBytes;
        bool operator==(const FileTooLarge &) const = default;
    };
    enum class Plain {
        unreadable,
        emptyPDFText,
        extractionFailed,
        passwordProtected, // a PDF that opens with a password only
        unreadableImage,
    };
    using Case = std::variant<UnsupportedType, FileTooLarge, Plain>;
};

class DocumentError final : public ErrorFamily<DocumentErrorCases> {
public:
    using ErrorFamily::ErrorFamily;

    [[nodiscard]] QString userMessage() const override;
    [[nodiscard]] std::optional<QString> recoverySuggestion() const override;
    [[nodiscard]] bool isRetryable() const override { return false; }
};

} // namespace morvane
