#pragma once

#include <QByteArrayView>

#include <optional>

namespace morvane {

// Reads rich text as its tokens. Line ends between them mean nothing and are left out.
class RichTextTokens {
public:
    struct Token {
        enum class Kind {
            GroupStart,
            GroupEnd,
            Word,   // a control word: its name, and a number where it has one
            Symbol, // a control symbol: `byte`
            Hex,    // a byte given as \'hh: `byte`
            Byte,   // a byte of the text
            Binary, // bytes of \bin, which are skipped
        };
        Kind kind = Kind::Byte;
        char byte = 0;
        QByteArrayView name; // into the bytes that are read
        std::optional<int> number;
    };

    explicit RichTextTokens(QByteArrayView bytes)
        : m_bytes(bytes)
    {}

    // Nothing behind the last.
    [[nodiscard]] std::optional<Token> next();

private:
    [[nodiscard]] bool atEnd() const { return m_at == m_bytes.size(); }
    [[nodiscard]] char peek() const { return m_bytes[m_at]; }
    Token control();
    Token hexByte();
    Token word();
    std::optional<int> number();

    QByteArrayView m_bytes;
    qsizetype m_at = 0;
};

} // namespace morvane
