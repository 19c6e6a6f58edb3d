#include "documents/RichTextTokens.h"

#include <algorithm>

namespace morvane {

namespace {

using Token = RichTextTokens::Token;

constexpr qsizetype longestName = 32; // as the format has it
constexpr qsizetype longestNumber = 10;

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::optional<int> hexDigit(char c)
{
    if (isDigit(c))
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return std::nullopt;
}

} // namespace

std::optional<Token> RichTextTokens::next()
{
    while (!atEnd()) {
        const char c = m_bytes[m_at++];
        switch (c) {
        case '{':
            return Token{Token::Kind::GroupStart};
        case '}':
            return Token{Token::Kind::GroupEnd};
        case '\\':
            if (!atEnd())
                return control();
            break;
        case '\r':
        case '\n':
        case '\0':
            break;
        default:
            return Token{Token::Kind::Byte, c};
        }
    }
    return std::nullopt;
}

Token RichTextTokens::control()
{
    if (isLetter(peek()))
        return word();
    const char symbol = m_bytes[m_at++];
    return symbol == '\'' ? hexByte() : Token{Token::Kind::Symbol, symbol};
}

// A digit that is missing leaves nothing to show.
Token RichTextTokens::hexByte()
{
    int value = 0;
    for (int digits = 0; digits < 2; ++digits) {
        const std::optional<int> digit = atEnd() ? std::nullopt : hexDigit(peek());
        if (!digit)
            return {Token::Kind::Binary};
        value = value * 16 + *digit;
        ++m_at;
    }
    return {Token::Kind::Hex, static_cast<char>(value)};
}

Token RichTextTokens::word()
{
    Token token{Token::Kind::Word};
    const qsizetype start = m_at;
    while (!atEnd() && isLetter(peek()) && m_at - start < longestName)
        ++m_at;
    token.name = m_bytes.sliced(start, m_at - start);
    token.number = number();
    if (!atEnd() && peek() == ' ')
        ++m_at;
    if (token.name == "bin") {
        m_at += std::clamp<qsizetype>(token.number.value_or(0), 0, m_bytes.size() - m_at);
        return {Token::Kind::Binary};
    }
    return token;
}

std::optional<int> RichTextTokens::number()
{
    const bool isNegative = m_bytes.size() - m_at >= 2 && peek() == '-' && isDigit(m_bytes[m_at + 1]);
    if (atEnd() || !(isNegative || isDigit(peek())))
        return std::nullopt;
    const qsizetype start = isNegative ? ++m_at : m_at;
    qint64 value = 0;
    for (; !atEnd() && isDigit(peek()) && m_at - start < longestNumber; ++m_at)
        value = value * 10 + (peek() - '0');
    constexpr qint64 largest = 2'147'483'647;
    value = std::min(value, largest);
    return static_cast<int>(isNegative ? -value : value);
}

} // namespace morvane
