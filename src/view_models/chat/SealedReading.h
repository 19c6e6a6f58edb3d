#pragma once

#include "documents/DocumentImporting.h"

#include <QString>

namespace morvane {

class FieldSealing;

// Files and pictures that were still being read when the lock came: where they lie, or their bytes, sealed,
// so that they are read again afterwards.
namespace SealedReading {

// Empty for nothing, and where it can't be sealed.
[[nodiscard]] QString seal(const QList<PastedContent> &handed, const FieldSealing &sealing);
// Empty where it can't be opened.
[[nodiscard]] QList<PastedContent> open(const QString &sealed, const FieldSealing &sealing);

} // namespace SealedReading

} // namespace morvane
