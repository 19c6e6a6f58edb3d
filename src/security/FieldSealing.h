#pragma once

#include <QString>

#include <optional>

namespace morvane {

// Seals the texts of stored records. Records hold sealed text only; readable text exists for as long as a
// caller has opened it. Any thread.
class FieldSealing {
public:
    virtual ~FieldSealing() = default;

    // No value means that nothing is to be stored: the caller drops the write and the column keeps what it
    // has.
    [[nodiscard]] virtual std::optional<QString> seal(const QString &text) const = 0;

    // Never fails: a field that cannot be opened reads as the empty text, and a text that was never sealed
    // as itself.
    [[nodiscard]] virtual QString open(const QString &sealed) const = 0;
};

} // namespace morvane
