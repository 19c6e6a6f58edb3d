#include "documents/RichText.h"

#include "documents/RichTextCodePage.h"
#include "documents/RichTextTokens.h"

#include <QSet>

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace morvane {

namespace {

using Token = RichTextTokens::Token;
using Words = std::unordered_map<std::string_view, QStringView>;

constexpr std::size_t mostFonts = 65'536; // as many as their numbers allow
constexpr int noFont = -1;

// Words that stand for text.
const Words &textOf()
{
    static const Words words{
        {"par", u"\n"},         {"line", u"\n"},        {"sect", u"\n"},    {"page", u"\n"},
        {"column", u"\n"},      {"tab", u"\t"},         {"cell", u"\t"},    {"nestcell", u"\t"},
        {"emdash", u"—"},       {"endash", u"–"},       {"lquote", u"‘"},   {"rquote", u"’"},
        {"ldblquote", u"“"},    {"rdblquote", u"”"},    {"bullet", u"•"},   {"emspace", u"\u2003"},
        {"enspace", u"\u2002"}, {"qmspace", u"\u2005"}, {"zwj", u"\u200D"}, {"zwnj", u"\u200C"},
        {"footnote", u" "},     {"shptxt", u"\n"}};
    return words;
}

// Groups that begin with one of these hold nothing that is read as text.
bool isSilent(std::string_view name)
{
    static const QSet<QByteArrayView> names{
        "colortbl", "stylesheet", "info",       "pict",         "header",   "headerl",   "headerr",
        "headerf",  "footer",     "footerl",    "footerr",      "footerf",  "fldinst",   "xe",
        "tc",       "rxe",        "txe",        "objdata",      "objclass", "listtable", "listoverridetable",
        "revtbl",   "template",   "private",    "bkmkstart",    "bkmkend",  "filetbl",   "themedata",
        "atnid",    "atnauthor",  "annotation", "nonesttables", "sp",       "datafield", "shprslt"};
    return names.contains(QByteArrayView(name.data(), static_cast<qsizetype>(name.size())));
}

// Groups that older readers pass over, as their words are starred, and that hold what a person reads.
bool isReadThoughStarred(std::string_view name)
{
    return name == "nesttableprops" || name == "footnote" || name == "shpinst";
}

// Marks of lists are taken from fonts of symbols, at places where a character has no meaning of its own.
bool isPrivate(char32_t code)
{
    return code >= 0xF000 && code <= 0xF0FF;
}

class Reader {
public:
    explicit Reader(QByteArrayView bytes)
        : m_tokens(bytes)
    {}

    std::optional<QString> read()
    {
        while (const auto token = m_tokens.next()) {
            if (!take(*token))
                return std::nullopt;
            if (m_groups.empty())
                break;
        }
        flush();
        return cleaned();
    }

private:
    // What a group takes over from the one around it.
    struct Group {
        bool isSilent = false;
        bool isFontTable = false;
        bool isHidden = false; // \v
        bool isDeleted = false;
        bool isInTable = false;
        bool isListMark = false;
        int font = noFont;
        int unicodeSkip = 1;
    };

    // False when the groups are too deep.
    bool take(const Token &token)
    {
        const bool isStarred = std::exchange(m_isStarred, false);
        switch (token.kind) {
        case Token::Kind::GroupStart:
            return begin();
        case Token::Kind::GroupEnd:
            end();
            return true;
        case Token::Kind::Word:
            if (token.name == "u" || !skips())
                word(token, isStarred);
            return true;
        case Token::Kind::Symbol:
            if (!skips())
                symbol(token.byte);
            return true;
        case Token::Kind::Hex:
        case Token::Kind::Byte:
            if (!skips() && isShown())
                m_pending += token.byte;
            return true;
        case Token::Kind::Binary:
            skips();
            return true;
        }
        return true;
    }

    bool begin()
    {
        flush();
        m_toSkip = 0;
        if (m_groups.size() == RichText::maxDepth)
            return false;
        m_groups.push_back(m_groups.empty() ? Group() : Group(m_groups.back()));
        return true;
    }

    void end()
    {
        flush();
        m_toSkip = 0;
        if (!m_groups.empty())
            m_groups.pop_back();
    }

    // Whether the token stands in for a character that was given by its number.
    bool skips()
    {
        if (m_toSkip == 0)
            return false;
        --m_toSkip;
        return true;
    }

    Group &group() { return m_groups.back(); }

    bool isShown()
    {
        return !group().isSilent && !group().isFontTable && !group().isHidden && !group().isDeleted;
    }

    void word(const Token &token, bool isStarred)
    {
        flush();
        const std::string_view name(token.name.data(), static_cast<std::size_t>(token.name.size()));
        if (destination(name, isStarred) || group().isSilent || fontTableWord(name, token.number) ||
            state(name, token.number))
            return;
        if (name == "u")
            unicode(token.number.value_or(0));
        else if (name == "row" || name == "nestrow")
            endRow();
        else if (name == "par" && group().isInTable)
            show(u" "); // a row stays a line
        else if (const auto text = textOf().find(name); text != textOf().end())
            show(text->second);
    }

    bool destination(std::string_view name, bool isStarred)
    {
        if (name == "fonttbl")
            group().isFontTable = true;
        else if (isSilent(name) || (isStarred && !isReadThoughStarred(name)))
            group().isSilent = true;
        else
            return false;
        return true;
    }

    bool fontTableWord(std::string_view name, std::optional<int> number)
    {
        if (!group().isFontTable)
            return false;
        const int value = number.value_or(0);
        if (name == "f")
            m_describedFont = value;
        else if (name == "fcharset")
            describeFont(RichTextCodePage::ofCharacterSet(value));
        else if (name == "cpg")
            describeFont(value);
        return true;
    }

    void describeFont(int codePage)
    {
        if (codePage != 0 && m_fonts.size() < mostFonts)
            m_fonts[m_describedFont] = codePage;
    }

    bool state(std::string_view name, std::optional<int> number)
    {
        const bool isOn = number != 0;
        if (name == "f")
            group().font = number.value_or(0);
        else if (name == "uc")
            group().unicodeSkip = std::max(number.value_or(1), 0);
        else if (name == "v")
            group().isHidden = isOn;
        else if (name == "deleted")
            group().isDeleted = isOn;
        else if (name == "intbl")
            group().isInTable = true;
        else if (name == "pard")
            group().isInTable = false;
        else if (name == "listtext" || name == "pntext")
            group().isListMark = true;
        else if (name == "plain")
            toPlain();
        else
            return documentWord(name, number);
        return true;
    }

    bool documentWord(std::string_view name, std::optional<int> number)
    {
        if (name == "deff")
            m_defaultFont = number.value_or(0);
        else if (name == "ansicpg" && number.value_or(0) > 0)
            m_codePage = *number;
        else if (name == "mac")
            m_codePage = 10000;
        else if (name == "pc")
            m_codePage = 437;
        else if (name == "pca")
            m_codePage = 850;
        else
            return false;
        return true;
    }

    void toPlain()
    {
        group().isHidden = false;
        group().isDeleted = false;
        group().font = noFont;
    }

    void symbol(char symbol)
    {
        switch (symbol) {
        case '*':
            m_isStarred = true;
            return;
        case '\\':
        case '{':
        case '}':
            if (isShown())
                m_pending += symbol; // may be the second byte of a character
            return;
        case '~':
            return show(u"\u00A0");
        case '_':
            return show(u"\u2011");
        case '\t':
            return show(u"\t");
        case '\n':
        case '\r':
            return show(group().isInTable ? u" " : u"\n");
        default: // hints for breaking words, and what is unknown
            return;
        }
    }

    // `number` is signed, of 16 bits; some writers give whole code points.
    void unicode(int number)
    {
        m_toSkip = group().unicodeSkip;
        const auto code = static_cast<char32_t>(number < 0 ? (number & 0xFFFF) : number);
        if (code > 0x10FFFF)
            show(u"\uFFFD");
        else if (group().isListMark && isPrivate(code))
            show(u"•");
        else if (code > 0xFFFF)
            show(QString::fromUcs4(&code, 1));
        else
            show(QString(QChar(static_cast<char16_t>(code))));
    }

    void endRow()
    {
        flush();
        if (!isShown())
            return;
        if (m_text.endsWith(u'\t'))
            m_text.chop(1);
        m_text += u'\n';
    }

    void show(QStringView text)
    {
        flush();
        if (isShown())
            m_text += text;
    }

    int codePage()
    {
        const auto font = m_fonts.find(group().font == noFont ? m_defaultFont : group().font);
        return font == m_fonts.end() ? m_codePage : font->second;
    }

    void flush()
    {
        if (m_pending.isEmpty())
            return;
        m_text += RichTextCodePage::decoded(m_pending, codePage());
        m_pending.clear();
    }

    // Without control characters, and with U+FFFD for halves of characters.
    QString cleaned()
    {
        QString text;
        text.reserve(m_text.size());
        for (qsizetype i = 0; i < m_text.size(); ++i) {
            const QChar c = m_text[i];
            if (c.isHighSurrogate() && i + 1 < m_text.size() && m_text[i + 1].isLowSurrogate())
                text += QStringView(m_text).sliced(i++, 2);
            else if (c.isSurrogate())
                text += QChar(QChar::ReplacementCharacter);
            else if (c >= u' ' || c == u'\n' || c == u'\t')
                text += c;
        }
        return text;
    }

    RichTextTokens m_tokens;
    std::vector<Group> m_groups;
    std::unordered_map<int, int> m_fonts; // code pages by font
    int m_codePage = RichTextCodePage::western;
    int m_defaultFont = 0;
    int m_describedFont = 0;
    int m_toSkip = 0;         // tokens that stand in for a character given by its number
    bool m_isStarred = false; // the next word may be unknown, and its group is silent then
    QByteArray m_pending;     // bytes of text that aren't decoded yet, in the innermost group's code page
    QString m_text;
};

} // namespace

std::optional<QString> RichText::text(QByteArrayView bytes)
{
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes = bytes.sliced(3);
    bytes = bytes.trimmed();
    if (!bytes.startsWith("{\\rtf"))
        return std::nullopt;
    return Reader(bytes).read();
}

} // namespace morvane
