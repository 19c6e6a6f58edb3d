#pragma once

#include "documents/ImportedAttachment.h"

#include <optional>

namespace morvane {

class FieldSealing;

// An attachment that waits through a lock in the composer, none of it readable.
class SealedAttachment {
public:
    // Nothing where it can't be sealed.
    [[nodiscard]] static std::optional<SealedAttachment> seal(const ImportedAttachment &attachment,
                                                              const FieldSealing &sealing);
    // Nothing where it can't be opened.
    [[nodiscard]] std::optional<ImportedAttachment> open(const FieldSealing &sealing) const;

private:
    ImportedAttachment m_shell; // what says nothing: kind, sizes
    QString m_filename;         // each of these sealed
    QString m_text;
    QString m_imageData; // in base64
    QString m_thumbnail; // likewise
};

} // namespace morvane
