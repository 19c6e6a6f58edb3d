#pragma once

#include "utils/bytes/SecretBytes.h"

#include <QString>

#include <memory>

namespace morvane {

// A passphrase of the person's as it was typed, in UTF-8 and composed, so that it is the same whichever
// keyboard spelled it. Copies share the bytes, which are wiped with the last.
class Passphrase {
public:
    static constexpr qsizetype fewestCharacters = 8;
    static constexpr qsizetype mostCharacters = 1024;

    Passphrase() = default; // none

    // Wipes `typed`, which nobody else holds any more.
    explicit Passphrase(QString &&typed);

    [[nodiscard]] bool isEmpty() const { return !m_bytes || m_bytes->size() == 0; }
    [[nodiscard]] qsizetype characters() const { return m_characters; }
    [[nodiscard]] const SecretBytes &bytes() const;

    [[nodiscard]] bool operator==(const Passphrase &other) const;

private:
    std::shared_ptr<const SecretBytes> m_bytes;
    qsizetype m_characters = 0;
};

} // namespace morvane
