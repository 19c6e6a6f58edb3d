#include "utils/text/ThinkingTags.h"

#include "utils/text/Text.h"

#include <QStringList>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using ThinkingTags::closing;
using ThinkingTags::opening;
using ThinkingTags::Parts;

// A reply that begins with more white space than this doesn't begin with a tag.
constexpr qsizetype longestLead = 100;

qsizetype behindSpace(QStringView text, qsizetype from)
{
    const qsizetype end = std::min(text.size(), from + longestLead);
    while (from < end && text[from].isSpace())
        ++from;
    return from;
}

bool mayBecome(QStringView tag, QStringView text)
{
    return text.size() < tag.size() && tag.startsWith(text);
}

// Where a closing tag without an opening one stands: alone on its line and outside of fenced code.
qsizetype loneClosing(QStringView text)
{
    if (!text.contains(closing))
        return -1;
    bool isInFence = false;
    for (qsizetype start = 0; start < text.size();) {
        const qsizetype newline = text.indexOf(u'\n', start);
        const qsizetype end = newline < 0 ? text.size() : newline;
        const QStringView line = text.sliced(start, end - start).trimmed();
        if (line == closing && !isInFence)
            return text.indexOf(closing, start);
        if (line.contains(opening))
            return -1;
        if (line.startsWith("```"_L1))
            isInFence = !isInFence;
        start = end + 1;
    }
    return -1;
}

struct Sections {
    QStringList thoughts;
    qsizetype end = 0; // where the answer begins
    bool isOpen = false;
    bool areTagged = false;

    void add(QStringView thought)
    {
        areTagged = true;
        if (QString words = Text::trimmed(thought); !words.isEmpty())
            thoughts.append(std::move(words));
    }
};

Sections sectionsOf(QStringView text)
{
    Sections sections;
    qsizetype at = behindSpace(text, 0);
    while (!sections.isOpen && text.sliced(at).startsWith(opening)) {
        const qsizetype from = at + opening.size();
        const qsizetype end = text.indexOf(closing, from);
        sections.isOpen = end < 0;
        sections.add(sections.isOpen ? text.sliced(from) : text.sliced(from, end - from));
        at = sections.isOpen ? text.size() : behindSpace(text, end + closing.size());
    }
    const qsizetype lone = sections.areTagged ? -1 : loneClosing(text);
    if (lone >= 0) {
        sections.add(text.first(lone));
        at = behindSpace(text, lone + closing.size());
    }
    sections.end = sections.areTagged ? at : 0;
    return sections;
}

// How much at the end may become a tag.
qsizetype unsettled(QStringView answer, bool hasThoughts)
{
    const QStringView start = answer.sliced(behindSpace(answer, 0));
    if (mayBecome(opening, start))
        return answer.size();
    const QStringView line = answer.sliced(answer.lastIndexOf(u'\n') + 1);
    return !hasThoughts && mayBecome(closing, line) ? line.size() : 0;
}

} // namespace

Parts ThinkingTags::split(const QString &text, Extent extent)
{
    const Sections sections = sectionsOf(text);
    Parts parts{sections.thoughts.join(u"\n\n"_s), sections.areTagged ? text.sliced(sections.end) : text,
                sections.isOpen};
    if (extent == Extent::growing)
        parts.answer.chop(unsettled(parts.answer, sections.areTagged));
    return parts;
}

QString ThinkingTags::answer(const QString &text)
{
    return split(text).answer;
}

QString ThinkingTags::joined(const QString &before, const QString &reply)
{
    const Sections earlier = sectionsOf(before);
    const Sections later = sectionsOf(reply);
    if (!earlier.isOpen && !later.areTagged)
        return before + reply;
    QString whole = opening.toString();
    whole += u'\n' + (earlier.thoughts + later.thoughts).join(u"\n\n"_s) + u'\n';
    whole.append(closing).append(u"\n\n"_s).append(QStringView(before).sliced(earlier.end));
    // The empty line behind the tag stood between the thinking and the words, not between those and the
    // former.
    if (later.end > 0 && reply[later.end - 1].isSpace() && !whole.back().isSpace())
        whole += u' ';
    return whole.append(QStringView(reply).sliced(later.end));
}

} // namespace morvane
