#include "markdown/InlineMarkdown.h"

#include "markdown/SpanMask.h"

#include <QStringEncoder>
#include <QUrl>

#include <md4c-html.h>
#include <md4c.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The parser knows whole documents only. A heading holds spans and nothing else, so the text is given to it
// as one: behind this opening, before this closing, on one line.
constexpr QByteArrayView opening = "# ";
constexpr QByteArrayView closing = " #";
// Stands for the line ends of the text. It is white space to the parser, and no line end.
constexpr char lineEndStandIn = '\v';

constexpr unsigned flags = MD_FLAG_NOHTML | MD_FLAG_STRIKETHROUGH | MD_FLAG_PERMISSIVEURLAUTOLINKS;

bool isLineEnd(QChar character)
{
    return character == u'\n' || character == u'\r';
}

// Space at either end of a heading is no part of it.
bool isOuterSpace(QChar character)
{
    return character.unicode() <= 0x20;
}

// What an ASCII character can do to the spans of a text.
enum class Meaning : std::uint8_t {
    none,
    opens,     // changes nothing until one comes that completes
    delimits,  // emphasis, code and formulas, between two runs of the same character
    completes, // what one that opens has begun, or the "://" of an address
    escapes,   // stands for something else, or makes the next one do so
};

constexpr std::array<Meaning, 128> meanings = [] {
    std::array<Meaning, 128> table{};
    const auto give = [&table](std::string_view characters, Meaning meaning) {
        for (const char c : characters)
            table[static_cast<unsigned char>(c)] = meaning;
    };
    give("[<&", Meaning::opens);
    give("*_~`$", Meaning::delimits);
    give(")>;/", Meaning::completes);
    give({"\\\0", 2}, Meaning::escapes);
    return table;
}();

// The ASCII characters that mean nothing to what stands before them. Looked up for each character that
// streams in.
constexpr std::array<bool, 128> inertCharacters = [] {
    std::array<bool, 128> table{};
    for (std::size_t c = 0; c < table.size(); ++c) {
        const bool isOtherSpace = (c >= '\t' && c <= '\r');
        table[c] = (meanings[c] == Meaning::none || meanings[c] == Meaning::opens) && !isOtherSpace;
    }
    return table;
}();

Meaning meaningOf(QChar character)
{
    return character.unicode() < meanings.size() ? meanings[character.unicode()] : Meaning::none;
}

// Most texts hold no span, and no open one either until its end is there: they need no parser.
bool mayHoldSpans(QStringView text)
{
    bool opened = false;
    for (const QChar &c : text) {
        const Meaning meaning = meaningOf(c);
        if (meaning == Meaning::none)
            continue;
        const QStringView before(text.begin(), &c);
        if (meaning == Meaning::escapes || (meaning == Meaning::completes && opened) ||
            (c == u'/' && before.endsWith(u':')) ||
            (meaning == Meaning::delimits && !before.endsWith(c) && before.contains(c)))
            return true;
        opened |= meaning == Meaning::opens;
    }
    return false;
}

// Nothing for a text that isn't valid.
std::optional<QByteArray> documentOf(QStringView text)
{
    QStringEncoder encoder(QStringEncoder::Utf8);
    QByteArray document(opening.size() + encoder.requiredSpace(text.size()) + closing.size(),
                        Qt::Uninitialized);
    char *const words = std::copy(opening.begin(), opening.end(), document.data());
    char *const end = encoder.appendToBuffer(words, text);
    if (encoder.hasError())
        return std::nullopt;
    document.truncate(std::copy(closing.begin(), closing.end(), end) - document.data());
    for (const char lineEnd : {'\n', '\r'}) {
        if (document.contains(lineEnd))
            document.replace(lineEnd, lineEndStandIn);
    }
    return document;
}

int appendBytes(const MD_CHAR *bytes, MD_SIZE size, void *result)
{
    static_cast<QByteArray *>(result)->append(bytes, static_cast<qsizetype>(size));
    return 0;
}

// The character that an entity such as "&copy;" stands for; the entity as written when it is unknown.
QString entityText(QByteArrayView entity)
{
    QByteArray html;
    const auto append = [](const MD_CHAR *bytes, MD_SIZE size, void *result) {
        appendBytes(bytes, size, result);
    };
    const QByteArray document = opening.toByteArray() + entity.toByteArray();
    if (md_html(document.constData(), static_cast<MD_SIZE>(document.size()), append, &html, flags, 0) != 0)
        return QString::fromUtf8(entity);
    QString text = QString::fromUtf8(html.trimmed()); // <h1>…</h1>
    text = text.sliced(4, std::max<qsizetype>(0, text.size() - 9));
    return text.replace("&lt;"_L1, "<"_L1)
        .replace("&gt;"_L1, ">"_L1)
        .replace("&quot;"_L1, "\""_L1)
        .replace("&amp;"_L1, "&"_L1);
}

QString attributeText(const MD_ATTRIBUTE &attribute)
{
    QString text;
    for (int i = 0; attribute.substr_offsets[i] < attribute.size; ++i) {
        const MD_OFFSET from = attribute.substr_offsets[i];
        const QByteArrayView part(attribute.text + from,
                                  static_cast<qsizetype>(attribute.substr_offsets[i + 1] - from));
        text += attribute.substr_types[i] == MD_TEXT_ENTITY ? entityText(part) : QString::fromUtf8(part);
    }
    return text;
}

// Nothing for an address that is not to be followed. The encoded form hides no character from its reader.
QString followableLink(const QString &address)
{
    const QUrl url(address);
    const QString scheme = url.scheme();
    if (!url.isValid() || (scheme != "http"_L1 && scheme != "https"_L1))
        return {};
    return QString::fromLatin1(url.toEncoded());
}

// Builds the text out of the parser's calls. What is shown is taken from the original by the place of each
// piece, so that line ends come out as they went in.
class SpanBuilder {
public:
    SpanBuilder(QStringView original, const QList<SpanMask::Stretch> &formulas, const QByteArray &document,
                AttributedText &result)
        : m_original(original)
        , m_formulas(formulas)
        , m_document(document)
        , m_result(result)
        , m_isAscii(document.size() == opening.size() + original.size() + closing.size())
        , m_holdsBackslash(original.contains(u'\\'))
    {}

    [[nodiscard]] bool parse()
    {
        MD_PARSER parser{};
        parser.flags = flags;
        parser.enter_block = [](MD_BLOCKTYPE, void *, void *) { return 0; };
        parser.leave_block = parser.enter_block;
        parser.enter_span = [](MD_SPANTYPE type, void *detail, void *self) {
            static_cast<SpanBuilder *>(self)->enter(type, detail);
            return 0;
        };
        parser.leave_span = [](MD_SPANTYPE type, void *, void *self) {
            static_cast<SpanBuilder *>(self)->leave(type);
            return 0;
        };
        parser.text = [](MD_TEXTTYPE type, const MD_CHAR *bytes, MD_SIZE size, void *self) {
            static_cast<SpanBuilder *>(self)->add(type, {bytes, static_cast<qsizetype>(size)});
            return 0;
        };
        return md_parse(m_document.constData(), static_cast<MD_SIZE>(m_document.size()), &parser, this) == 0;
    }

private:
    void enter(MD_SPANTYPE type, void *detail)
    {
        if (type == MD_SPAN_A)
            m_links.append(followableLink(attributeText(static_cast<MD_SPAN_A_DETAIL *>(detail)->href)));
        count(type, 1);
    }

    void leave(MD_SPANTYPE type)
    {
        if (type == MD_SPAN_A)
            m_links.removeLast();
        count(type, -1);
    }

    void count(MD_SPANTYPE type, int change)
    {
        if (type == MD_SPAN_STRONG)
            m_bold += change;
        else if (type == MD_SPAN_EM)
            m_italic += change;
        else if (type == MD_SPAN_DEL)
            m_struck += change;
        else if (type == MD_SPAN_CODE)
            m_code += change;
    }

    [[nodiscard]] AttributedText::Formats formats() const
    {
        AttributedText::Formats formats;
        formats.setFlag(AttributedText::Bold, m_bold > 0);
        formats.setFlag(AttributedText::Italic, m_italic > 0);
        formats.setFlag(AttributedText::Strikethrough, m_struck > 0);
        formats.setFlag(AttributedText::Code, m_code > 0);
        return formats;
    }

    void add(MD_TEXTTYPE type, QByteArrayView bytes)
    {
        if (type == MD_TEXT_NULLCHAR)
            append(u"\uFFFD"_s);
        else if (type == MD_TEXT_ENTITY)
            append(entityText(bytes));
        else
            appendPiece(type, bytes);
    }

    void appendPiece(MD_TEXTTYPE type, QByteArrayView bytes)
    {
        const std::less<> before;
        if (before(bytes.data(), m_document.constData()) || !before(bytes.data(), m_document.constEnd()))
            return append(QString::fromUtf8(bytes)); // the parser's own
        const qsizetype from = bytes.data() - m_document.constData();
        const qsizetype start = originalOffset(from);
        const QStringView piece = m_original.sliced(start, originalOffset(from + bytes.size()) - start);
        if (type == MD_TEXT_NORMAL && (m_holdsBackslash || !m_formulas.isEmpty()))
            appendWords(piece, start, from > 0 && m_document[from - 1] == '\\');
        else
            append(piece);
    }

    // `start` is the place of the piece in the original.
    void appendWords(QStringView piece, qsizetype start, bool escaped)
    {
        qsizetype at = 0;
        for (; m_formula < m_formulas.size(); ++m_formula) {
            const qsizetype formula = m_formulas[m_formula].start - start;
            const qsizetype length = m_formulas[m_formula].length;
            if (formula >= piece.size())
                break;
            if (formula < at)
                continue; // of an address that isn't shown
            appendWithoutHardBreaks(piece.sliced(at, formula - at), escaped && at == 0);
            append(piece.sliced(formula, length), AttributedText::Code);
            at = formula + length;
        }
        appendWithoutHardBreaks(piece.sliced(at), escaped && at == 0);
    }

    // A backslash at the end of a line asks for a line break, which is there already. `escaped` says that the
    // first character stands behind a backslash of its own.
    void appendWithoutHardBreaks(QStringView piece, bool escaped)
    {
        qsizetype from = 0;
        for (qsizetype at = escaped ? 1 : 0; at + 1 < piece.size(); ++at) {
            if (piece[at] != u'\\' || !isLineEnd(piece[at + 1]))
                continue;
            append(piece.sliced(from, at - from));
            from = at + 1;
        }
        append(piece.sliced(from));
    }

    void append(QStringView piece, AttributedText::Formats more = {})
    {
        m_result.append(piece, formats() | more, m_links.isEmpty() ? QString() : m_links.last());
    }

    // Pieces come in order, so the two offsets go forward together.
    [[nodiscard]] qsizetype originalOffset(qsizetype documentOffset)
    {
        if (m_isAscii)
            return documentOffset - opening.size();
        for (; m_documentOffset < documentOffset; ++m_documentOffset) {
            const auto byte = static_cast<unsigned char>(m_document[m_documentOffset]);
            const bool continues = (byte & 0xC0U) == 0x80U;
            m_originalOffset += continues ? 0 : byte >= 0xF0U ? 2 : 1;
        }
        return m_originalOffset;
    }

    QStringView m_original;
    const QList<SpanMask::Stretch> &m_formulas;
    qsizetype m_formula = 0; // the next one
    const QByteArray &m_document;
    AttributedText &m_result;
    bool m_isAscii; // a byte for each UTF-16 unit
    bool m_holdsBackslash;
    qsizetype m_documentOffset = opening.size();
    qsizetype m_originalOffset = 0;
    QStringList m_links; // the open ones, empty where a link is not followed
    int m_bold = 0;
    int m_italic = 0;
    int m_struck = 0;
    int m_code = 0;
};

// Where the parsed part ends: never inside a character.
qsizetype parsedLength(QStringView text)
{
    if (text.size() <= InlineMarkdown::longestParsed)
        return text.size();
    const bool splitsPair = text[InlineMarkdown::longestParsed].isLowSurrogate();
    return InlineMarkdown::longestParsed - (splitsPair ? 1 : 0);
}

} // namespace

AttributedText InlineMarkdown::parse(QStringView text)
{
    AttributedText plain;
    const QStringView parsed = text.first(parsedLength(text));
    if (!mayHoldSpans(parsed)) {
        plain.append(text);
        return plain;
    }
    const auto first = std::find_if_not(parsed.begin(), parsed.end(), isOuterSpace) - parsed.begin();
    qsizetype last = parsed.size();
    while (last > first && isOuterSpace(parsed[last - 1]))
        --last;

    AttributedText result;
    result.text.reserve(text.size());
    result.append(text.first(first));
    const QStringView core = parsed.sliced(first, last - first);
    const bool isMasked = SpanMask::isNeeded(core);
    const SpanMask::Masked masked = isMasked ? SpanMask::of(core) : SpanMask::Masked();
    const auto document = documentOf(isMasked ? QStringView(masked.text) : core);
    if (!document || !SpanBuilder(core, masked.formulas, *document, result).parse()) {
        plain.append(text);
        return plain;
    }
    result.append(text.sliced(last));
    return result;
}

bool InlineMarkdown::isInert(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) {
        return c.unicode() < inertCharacters.size() ? inertCharacters[c.unicode()]
                                                    : !c.isSpace() && !c.isSurrogate();
    });
}

} // namespace morvane
