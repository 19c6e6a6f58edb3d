#include "services/MarkupScan.h"

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using MarkupScan::Match;

// The two letters beyond ASCII whose other case is an ASCII letter count as it, as they do for a matcher.
constexpr char16_t folded(char16_t c)
{
    constexpr char16_t longS = u'\u017f';
    constexpr char16_t kelvin = u'\u212a';
    if (c >= u'A' && c <= u'Z')
        return static_cast<char16_t>(c + (u'a' - u'A'));
    if (c == longS)
        return u's';
    return c == kelvin ? u'k' : c;
}

bool isWord(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_';
}

bool isSpace(QChar c)
{
    return c == u' ' || (c >= u'\t' && c <= u'\r');
}

// `expected` is lower case.
bool standsAt(QStringView text, qsizetype at, QLatin1StringView expected)
{
    return text.size() - at >= expected.size() &&
           std::equal(expected.begin(), expected.end(), text.begin() + at,
                      [](char letter, QChar c) { return folded(c.unicode()) == static_cast<uchar>(letter); });
}

// Where one needle occurs, asked for from left to right. An answer is kept until it is passed, so that all
// questions together read the text once. The needle is lower case and begins with no letter.
class Occurrences {
public:
    Occurrences(QStringView text, QLatin1StringView needle)
        : m_text(text)
        , m_needle(needle)
    {}

    // The first at or behind `from`, or -1. `from` never decreases.
    [[nodiscard]] qsizetype from(qsizetype from)
    {
        if (m_found >= from || m_found == none)
            return m_found;
        m_found = m_text.indexOf(QChar(m_needle.front()), from);
        while (m_found != none && !standsAt(m_text, m_found, m_needle))
            m_found = m_text.indexOf(QChar(m_needle.front()), m_found + 1);
        return m_found;
    }

private:
    static constexpr qsizetype none = -1;
    static constexpr qsizetype notAsked = -2;

    QStringView m_text;
    QLatin1StringView m_needle;
    qsizetype m_found = notAsked;
};

// `<name\b[^>]*>.*?</name>`
class Elements {
public:
    Elements(QStringView text, QLatin1StringView name)
        : m_text(text)
        , m_openingText('<' + QByteArray(name.data(), name.size()))
        , m_closingText("</" + QByteArray(name.data(), name.size()) + '>')
        , m_opening(text, QLatin1StringView(m_openingText))
        , m_tagEnd(text, ">"_L1)
        , m_closing(text, QLatin1StringView(m_closingText))
    {}

    [[nodiscard]] std::optional<Match> next(qsizetype from)
    {
        for (auto start = m_opening.from(from); start >= 0; start = m_opening.from(start + 1)) {
            const qsizetype nameEnd = start + m_openingText.size();
            if (nameEnd < m_text.size() && isWord(m_text[nameEnd]))
                continue; // another, longer name
            const qsizetype tagEnd = m_tagEnd.from(nameEnd);
            const qsizetype closing = tagEnd < 0 ? -1 : m_closing.from(tagEnd + 1);
            if (closing < 0)
                return std::nullopt; // nor will any later tag end, or be closed
            return Match{start, closing + m_closingText.size(), tagEnd + 1, closing};
        }
        return std::nullopt;
    }

private:
    QStringView m_text;
    QByteArray m_openingText;
    QByteArray m_closingText;
    Occurrences m_opening;
    Occurrences m_tagEnd;
    Occurrences m_closing;
};

struct Comments {
    Occurrences opening;
    Occurrences closing;

    explicit Comments(QStringView text)
        : opening(text, "<!--"_L1)
        , closing(text, "-->"_L1)
    {}

    [[nodiscard]] std::optional<Match> next(qsizetype from)
    {
        constexpr qsizetype openingSize = 4;
        const qsizetype start = opening.from(from);
        const qsizetype end = start < 0 ? -1 : closing.from(start + openingSize);
        return end < 0 ? std::nullopt : std::optional(Match{start, end + 3});
    }
};

struct Tags {
    QStringView text;

    [[nodiscard]] std::optional<Match> next(qsizetype from) const
    {
        for (auto start = text.indexOf(u'<', from); start >= 0; start = text.indexOf(u'<', start + 1)) {
            const qsizetype end = text.indexOf(u'>', start + 1);
            if (end < 0)
                return std::nullopt;
            if (end > start + 1) // "<>" is no tag
                return Match{start, end + 1};
        }
        return std::nullopt;
    }
};

struct BlockEnds {
    QStringView text;

    [[nodiscard]] std::optional<Match> next(qsizetype from) const
    {
        static constexpr std::array names{"p>"_L1,  "div>"_L1, "section>"_L1, "article>"_L1,
                                          "li>"_L1, "tr>"_L1,  "h1>"_L1,      "h2>"_L1,
                                          "h3>"_L1, "h4>"_L1,  "h5>"_L1,      "h6>"_L1};
        for (auto start = text.indexOf(u'<', from); start >= 0; start = text.indexOf(u'<', start + 1)) {
            if (start + 1 >= text.size() || text[start + 1] != u'/')
                continue;
            for (const auto name : names) {
                if (standsAt(text, start + 2, name))
                    return Match{start, start + 2 + name.size()};
            }
        }
        return std::nullopt;
    }
};

struct LineBreaks {
    QStringView text;

    [[nodiscard]] std::optional<Match> next(qsizetype from) const
    {
        static constexpr auto opening = "<br"_L1;
        for (auto start = text.indexOf(u'<', from); start >= 0; start = text.indexOf(u'<', start + 1)) {
            if (!standsAt(text, start, opening))
                continue;
            qsizetype at = start + opening.size();
            while (at < text.size() && isSpace(text[at]))
                ++at;
            if (at < text.size() && text[at] == u'/')
                ++at;
            if (at < text.size() && text[at] == u'>')
                return Match{start, at + 1};
        }
        return std::nullopt;
    }
};

struct Entity {
    QLatin1StringView name; // lower case, from "&" to ";"
    char16_t character;
};

constexpr std::array entities{
    Entity{"&nbsp;"_L1, u' '},        Entity{"&amp;"_L1, u'&'},        Entity{"&lt;"_L1, u'<'},
    Entity{"&gt;"_L1, u'>'},          Entity{"&quot;"_L1, u'"'},       Entity{"&#39;"_L1, u'\''},
    Entity{"&apos;"_L1, u'\''},       Entity{"&mdash;"_L1, u'\u2014'}, Entity{"&ndash;"_L1, u'\u2013'},
    Entity{"&hellip;"_L1, u'\u2026'}, Entity{"&rsquo;"_L1, u'\u2019'}, Entity{"&lsquo;"_L1, u'\u2018'},
    Entity{"&ldquo;"_L1, u'\u201c'},  Entity{"&rdquo;"_L1, u'\u201d'},
};

// Moves what stays to the front of the text's own memory. `next` reads only behind what was written, and
// `fill` is never longer than a match.
template <typename Matches>
void replaceAll(QString &text, Matches &&matches, QStringView fill)
{
    QChar *const data = text.data();
    QChar *kept = data;
    qsizetype done = 0;
    while (const auto match = matches.next(done)) {
        kept = std::copy(data + done, data + match->start, kept);
        kept = std::copy(fill.begin(), fill.end(), kept);
        done = match->end;
    }
    if (done == 0)
        return;
    kept = std::copy(data + done, data + text.size(), kept);
    text.truncate(kept - data);
}

// A view that stays good while the text is changed in place.
QStringView inPlace(QString &text)
{
    text.detach();
    return text;
}

constexpr QStringView lineEnd = u"\n";

} // namespace

std::optional<Match> MarkupScan::firstElement(QStringView text, QLatin1StringView name)
{
    return Elements(text, name).next(0);
}

std::optional<Match> MarkupScan::firstTitle(QStringView text)
{
    static constexpr auto openingText = "<title"_L1;
    static constexpr auto closingText = "</title>"_L1;
    Occurrences opening(text, openingText);
    Occurrences tagEnd(text, ">"_L1);
    Occurrences closing(text, closingText);
    Occurrences newline(text, "\n"_L1);
    for (auto start = opening.from(0); start >= 0; start = opening.from(start + 1)) {
        const qsizetype end = tagEnd.from(start + openingText.size());
        const qsizetype close = end < 0 ? -1 : closing.from(end + 1);
        if (close < 0)
            return std::nullopt;
        const qsizetype broken = newline.from(end + 1);
        if (broken < 0 || broken > close)
            return Match{start, close + closingText.size(), end + 1, close};
    }
    return std::nullopt;
}

void MarkupScan::removeElements(QString &text, QLatin1StringView name)
{
    replaceAll(text, Elements(inPlace(text), name), {});
}

void MarkupScan::removeComments(QString &text)
{
    replaceAll(text, Comments(inPlace(text)), {});
}

void MarkupScan::removeTags(QString &text)
{
    replaceAll(text, Tags{inPlace(text)}, {});
}

void MarkupScan::breakAfterBlocks(QString &text)
{
    replaceAll(text, BlockEnds{inPlace(text)}, lineEnd);
}

void MarkupScan::breakAtLineBreaks(QString &text)
{
    replaceAll(text, LineBreaks{inPlace(text)}, lineEnd);
}

void MarkupScan::decodeEntities(QString &text)
{
    const QStringView whole = inPlace(text);
    QChar *const data = text.data();
    QChar *kept = data;
    qsizetype done = 0;
    for (auto at = whole.indexOf(u'&'); at >= 0; at = whole.indexOf(u'&', std::max(at + 1, done))) {
        const auto entity = std::find_if(entities.begin(), entities.end(), [&](const Entity &candidate) {
            return standsAt(whole, at, candidate.name);
        });
        if (entity == entities.end())
            continue;
        kept = std::copy(data + done, data + at, kept);
        *kept++ = entity->character;
        done = at + entity->name.size();
    }
    kept = std::copy(data + done, data + whole.size(), kept);
    text.truncate(kept - data);
}

void MarkupScan::tidyLines(QString &text)
{
    const qsizetype size = inPlace(text).size();
    QChar *const data = text.data();
    QChar *kept = data;
    bool lineIsEmpty = true;
    bool blankWaits = false;
    for (qsizetype i = 0; i < size; ++i) {
        const QChar c = data[i];
        if ((c >= u'\n' && c <= u'\r') || c == u'\u0085' || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator) {
            lineIsEmpty = true;
            blankWaits = false;
        } else if (c == u' ' || c == u'\t') {
            blankWaits = !lineIsEmpty;
        } else {
            if (lineIsEmpty && kept != data)
                *kept++ = u'\n';
            if (blankWaits)
                *kept++ = u' ';
            *kept++ = c;
            lineIsEmpty = false;
            blankWaits = false;
        }
    }
    text.truncate(kept - data);
}

} // namespace morvane
