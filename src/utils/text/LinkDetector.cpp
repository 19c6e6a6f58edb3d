#include "utils/text/LinkDetector.h"

#include "utils/text/TopLevelDomains.h"

#include <array>
#include <optional>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array schemes{"http://"_L1, "https://"_L1, "ftp://"_L1};
constexpr QLatin1StringView mail{"mailto:"};
constexpr qsizetype longestHost = 253;
constexpr qsizetype longestLabel = 63;
constexpr qsizetype longestLocalPart = 64;

struct CodePoint {
    char32_t value;
    qsizetype size; // UTF-16 units
};

// A lone surrogate reads as itself, which belongs to nothing.
CodePoint codePointAt(QStringView text, qsizetype at)
{
    const QChar first = text[at];
    if (first.isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate())
        return {QChar::surrogateToUcs4(first, text[at + 1]), 2};
    return {first.unicode(), 1};
}

bool isAsciiAlphanumeric(char32_t c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// What a domain name or the part of an e-mail address before its "@" may be made of.
bool isWordPart(char32_t c)
{
    if (c < 0x80)
        return isAsciiAlphanumeric(c) || c == '.' || c == '-' || c == '_' || c == '%' || c == '+';
    return QChar::isLetterOrNumber(c) || QChar::isMark(c);
}

bool isAddressPart(char32_t c)
{
    if (c < 0x80)
        return isAsciiAlphanumeric(c) || QLatin1StringView("-._~:/?#[]@!$&'()*+,;=%").contains(QChar(c));
    return QChar::isLetterOrNumber(c) || QChar::isMark(c) || QChar::isSymbol(c);
}

bool endsSentence(QChar c)
{
    return QLatin1StringView(".,;:!?'*([").contains(c);
}

// The scheme that begins at `at`; empty for none.
QLatin1StringView schemeAt(QStringView text, qsizetype at)
{
    for (const QLatin1StringView scheme : schemes) {
        if (text.sliced(at).startsWith(scheme, Qt::CaseInsensitive))
            return scheme;
    }
    return {};
}

// Where an address that is under way at `at` ends: before the first character that can't belong to it, a
// closing bracket that it didn't open, or the next address of a list; and before what ends the sentence
// around it.
qsizetype endOfAddress(QStringView text, qsizetype begin, qsizetype at)
{
    int round = 0;
    int square = 0;
    while (at < text.size()) {
        const CodePoint c = codePointAt(text, at);
        if (!isAddressPart(c.value))
            break;
        if ((c.value == ')' && --round < 0) || (c.value == ']' && --square < 0))
            break;
        round += c.value == '(';
        square += c.value == '[';
        if ((c.value == ',' || c.value == ';') && at + 1 < text.size() && !schemeAt(text, at + 1).isEmpty())
            break;
        at += c.size;
    }
    while (at > begin && endsSentence(text[at - 1]))
        --at;
    return at;
}

bool isDomain(QStringView host)
{
    if (host.size() > longestHost)
        return false;
    qsizetype labelCount = 0;
    QStringView last;
    for (const QStringView label : host.tokenize(u'.')) {
        if (label.isEmpty() || label.size() > longestLabel || label.startsWith(u'-') ||
            label.endsWith(u'-') || label.contains(u'_') || label.contains(u'%') || label.contains(u'+'))
            return false;
        last = label;
        ++labelCount;
    }
    // "done.So" is a sentence without its blank; people write the ending in one case.
    const QString ending = last.toString();
    const bool isOneCase = ending == ending.toLower() || ending == ending.toUpper();
    return labelCount > 1 && isOneCase && TopLevelDomains::contains(last);
}

class Finder {
public:
    explicit Finder(QStringView text)
        : m_text(text)
    {}

    std::vector<LinkDetector::Link> all()
    {
        while (m_at < m_text.size()) {
            const CodePoint c = codePointAt(m_text, m_at);
            if (isWordPart(c.value))
                takeWord();
            else
                m_at += c.size;
        }
        return std::move(m_links);
    }

private:
    // A word is looked at once and then left behind, so the whole takes one pass.
    void takeWord()
    {
        const qsizetype begin = m_at;
        qsizetype end = begin;
        while (end < m_text.size()) {
            const CodePoint c = codePointAt(m_text, end);
            if (!isWordPart(c.value))
                break;
            end += c.size;
        }
        m_at = end;
        if (end < m_text.size() && m_text[end] == u':' && takeScheme(begin, end))
            return;
        if (end < m_text.size() && m_text[end] == u'@')
            takeMail(begin, end);
        else
            takeDomain(begin, end);
    }

    // The word may run into a scheme without a blank, as it does in scripts that write none.
    bool takeScheme(qsizetype begin, qsizetype colon)
    {
        for (const QLatin1StringView scheme : schemes) {
            const qsizetype start = colon - (scheme.size() - 3); // 3 is the size of "://"
            if (start < begin || !m_text.sliced(start).startsWith(scheme, Qt::CaseInsensitive) ||
                (start > begin && isAsciiAlphanumeric(m_text[start - 1].unicode())))
                continue;
            const qsizetype host = start + scheme.size();
            const qsizetype end = endOfAddress(m_text, host, host);
            if (end == host)
                return false;
            takeDomain(begin, start);
            add(start, end, m_text.sliced(start, end - start).toString());
            m_at = end;
            return true;
        }
        return false;
    }

    void takeMail(qsizetype begin, qsizetype at)
    {
        qsizetype end = at + 1;
        while (end < m_text.size() && isWordPart(codePointAt(m_text, end).value))
            end += codePointAt(m_text, end).size;
        m_at = end;
        while (end > at + 1 &&
               (m_text[end - 1] == u'.' || m_text[end - 1] == u'-' || m_text[end - 1] == u'_'))
            --end;
        const QStringView local = m_text.sliced(begin, at - begin);
        if (local.size() > longestLocalPart || local.startsWith(u'.') || local.endsWith(u'.') ||
            !isDomain(m_text.sliced(at + 1, end - at - 1)))
            return;
        const bool isNamed =
            begin >= mail.size() &&
            m_text.sliced(begin - mail.size(), mail.size()).compare(mail, Qt::CaseInsensitive) == 0;
        if (!isNamed) {
            add(begin, end, mail + m_text.sliced(begin, end - begin).toString());
            return;
        }
        if (end < m_text.size() && m_text[end] == u'?')
            m_at = end = endOfAddress(m_text, end, end);
        add(begin - mail.size(), end,
            m_text.sliced(begin - mail.size(), end - begin + mail.size()).toString());
    }

    void takeDomain(qsizetype begin, qsizetype end)
    {
        // The rest of a path, of a handle or of an address is no name of its own.
        if (begin > 0 && QLatin1StringView("/\\@=&").contains(m_text[begin - 1]))
            return;
        while (begin < end && m_text[begin] == u'_')
            ++begin;
        qsizetype nameEnd = end;
        while (nameEnd > begin && QLatin1StringView("._-").contains(m_text[nameEnd - 1]))
            --nameEnd;
        if (!isDomain(m_text.sliced(begin, nameEnd - begin)))
            return;
        if (nameEnd == end)
            nameEnd = std::max(nameEnd, endOfRest(end));
        m_at = std::max(m_at, nameEnd);
        add(begin, nameEnd, u"http://"_s + m_text.sliced(begin, nameEnd - begin).toString());
    }

    // Port, path, query and fragment behind a domain name.
    [[nodiscard]] qsizetype endOfRest(qsizetype at) const
    {
        if (at >= m_text.size())
            return at;
        if (m_text[at] == u':') {
            qsizetype port = at + 1;
            while (port < m_text.size() && m_text[port] >= u'0' && m_text[port] <= u'9')
                ++port;
            if (port == at + 1)
                return at;
            at = port;
        }
        if (at >= m_text.size() || !QLatin1StringView("/?#").contains(m_text[at]))
            return at;
        return endOfAddress(m_text, at, at);
    }

    void add(qsizetype start, qsizetype end, const QString &address)
    {
        QUrl url(address);
        if (url.isValid() && !url.isRelative() && (!url.host().isEmpty() || url.scheme() == "mailto"_L1))
            m_links.push_back({start, end - start, std::move(url)});
    }

    QStringView m_text;
    qsizetype m_at = 0;
    std::vector<LinkDetector::Link> m_links;
};

} // namespace

std::vector<LinkDetector::Link> LinkDetector::find(QStringView text)
{
    return Finder(text).all();
}

} // namespace morvane
