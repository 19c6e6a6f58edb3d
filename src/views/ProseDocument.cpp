#include "views/ProseDocument.h"

#include <QFontMetricsF>
#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>

namespace morvane {

namespace {

constexpr double leastIndent = 26;
constexpr double gapBehindSign = 8;
constexpr double gapBetweenItems = 4;

// A longer paragraph stands as several: laying out a line costs more than its length. It is parted behind a
// blank where it has one among its last so many characters.
constexpr qsizetype longestParagraph = 4000;
constexpr qsizetype mostTakenOver = 400;
// Parts a paragraph in the flat text; what ends one there is U+2029.
constexpr QChar cut = u'\n';

qsizetype lastParagraph(QStringView text)
{
    const auto ends = [](QChar c) { return c == QChar::ParagraphSeparator || c == cut; };
    return text.rend() - std::find_if(text.rbegin(), text.rend(), ends);
}

// Where the open paragraph is parted once it is full: behind its last blank, but not far from its end, and
// never between the halves of a character.
qsizetype cutPlace(QStringView text)
{
    for (qsizetype i = text.size() - 1; i >= text.size() - mostTakenOver; --i) {
        if (text[i] == u' ' || text[i] == QChar::LineSeparator)
            return i + 1;
    }
    return text.size() - (text.back().isHighSurrogate() ? 1 : 0);
}

void insertCut(AttributedText &whole, qsizetype place)
{
    whole.text.insert(place, cut);
    for (auto run = whole.runs.rbegin(); run != whole.runs.rend() && run->start + run->length > place;
         ++run) {
        if (run->start >= place)
            ++run->start;
        else
            ++run->length;
    }
}

// Puts words behind the text, with a new paragraph where the open one gets too long.
void append(AttributedText &whole, QStringView words, const AttributedText::Run &run)
{
    while (!words.isEmpty()) {
        const qsizetype room = longestParagraph - (whole.text.size() - lastParagraph(whole.text));
        whole.append(words.first(std::min(room, words.size())), run.formats, run.link);
        words = words.sliced(std::min(room, words.size()));
        if (!words.isEmpty())
            insertCut(whole, cutPlace(whole.text));
    }
}

// The length of what both texts begin with, in words and looks.
qsizetype commonLength(const AttributedText &left, const AttributedText &right)
{
    const auto ends = std::mismatch(left.text.begin(), left.text.end(), right.text.begin(), right.text.end());
    qsizetype common = ends.first - left.text.begin();
    const qsizetype runs = std::max(left.runs.size(), right.runs.size());
    for (qsizetype i = 0; i < runs; ++i) {
        const bool both = i < left.runs.size() && i < right.runs.size();
        if (both && left.runs[i] == right.runs[i])
            continue;
        const auto startOf = [i](const AttributedText &text) {
            return i < text.runs.size() ? text.runs[i].start : text.text.size();
        };
        return std::min({common, startOf(left), startOf(right)});
    }
    return common;
}

} // namespace

void ProseDocument::setProse(const QVariant &value)
{
    const auto prose = value.value<Prose>();
    if (m_prose == prose)
        return;
    const bool sameForm = prose.marks.isEmpty() == m_prose.marks.isEmpty() && !m_shown.text.text.isEmpty();
    m_prose = prose;
    if (textDocument()) {
        if (sameForm)
            change(flattened());
        else
            showAll();
    }
    Q_EMIT written();
    Q_EMIT proseChanged();
}

void ProseDocument::change(Flat whole)
{
    QString &words = whole.text.text;
    m_settled.mark(words);
    const qsizetype from = m_settled.keepBefore(commonLength(m_shown.text, whole.text), words);
    write(std::move(whole), from);
    if (m_growing && m_shown.marks.isEmpty())
        m_settled.settle(*textDocument(), m_shown.text.text);
}

void ProseDocument::setGrowing(bool growing)
{
    if (m_growing == growing)
        return;
    m_growing = growing;
    if (!growing)
        joinLines();
    Q_EMIT growingChanged();
}

void ProseDocument::setWidth(double width)
{
    if (m_width == width)
        return;
    m_width = width;
    joinLines(); // they end elsewhere now
    Q_EMIT widthChanged();
}

void ProseDocument::joinLines()
{
    if (textDocument())
        m_settled.join(*textDocument(), m_shown.text.text);
}

ProseDocument::Flat ProseDocument::flattened() const
{
    Flat flat;
    AttributedText &whole = flat.text;
    for (const AttributedText &part : m_prose.parts) {
        if (&part != &m_prose.parts.first())
            whole.append(QStringView(u"\u2029"));
        const qsizetype start = whole.text.size();
        const qsizetype number = &part - &m_prose.parts.first();
        if (!m_prose.marks.isEmpty())
            whole.append(QString(m_prose.marks[number].sign + u'\t'));
        const QString words = harmless(part.text);
        qsizetype at = 0;
        for (const AttributedText::Run &run : part.runs) {
            append(whole, QStringView(words).sliced(at, run.start - at), {});
            append(whole, QStringView(words).sliced(run.start, run.length), run);
            at = run.start + run.length;
        }
        append(whole, QStringView(words).sliced(at), {});
        if (m_prose.marks.isEmpty())
            continue;
        const int depth = m_prose.marks[number].depth;
        flat.marks.append({depth, true});
        flat.marks.resize(flat.marks.size() + QStringView(whole.text).sliced(start).count(cut),
                          {depth, false});
    }
    return flat;
}

// A number of many digits takes more room than a dot.
double ProseDocument::signWidth() const
{
    const QFontMetricsF metrics(textDocument()->defaultFont());
    double widest = leastIndent - gapBehindSign;
    for (const Prose::Mark &mark : m_prose.marks)
        widest = std::max(widest, metrics.horizontalAdvance(mark.sign));
    return widest + gapBehindSign;
}

QString ProseDocument::textBetween(int from, int to) const
{
    QString text;
    const QString &shown = m_shown.text.text;
    qsizetype paragraph = QStringView(shown).first(from).count(QChar::ParagraphSeparator) +
                          QStringView(shown).first(from).count(cut);
    for (qsizetype i = from; i < std::min<qsizetype>(to, shown.size()); ++i) {
        const bool begins = i == 0 || shown[i - 1] == QChar::ParagraphSeparator;
        if (begins && !m_shown.marks.isEmpty())
            text += QString(qsizetype{2} * m_shown.marks[paragraph].depth, u' ');
        if (shown[i] == cut || shown[i] == QChar::ParagraphSeparator)
            ++paragraph;
        if (shown[i] == QChar::ParagraphSeparator || shown[i] == QChar::LineSeparator)
            text += u'\n';
        else if (shown[i] != cut)
            text += shown[i] == u'\t' ? u' ' : shown[i]; // stands behind the sign of an item
    }
    return text;
}

void ProseDocument::showAll()
{
    m_settled.clear();
    textDocument()->clear();
    QTextCursor cursor(textDocument());
    QTextBlockFormat paragraph;
    paragraph.setLineHeight(lineHeight(), QTextBlockFormat::MinimumHeight);
    if (!m_prose.marks.isEmpty())
        paragraph.setBottomMargin(gapBetweenItems);
    cursor.setBlockFormat(paragraph);
    write(flattened(), 0);
}

void ProseDocument::write(Flat whole, qsizetype from)
{
    QTextCursor cursor(textDocument());
    cursor.setPosition(static_cast<int>(from));
    cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    insert(cursor, whole.text, from);
    mark(whole.marks, from);
    cursor.endEditBlock();
    m_shown = std::move(whole);
}

// Indents the paragraphs from that place on, and those before it that stand elsewhere now.
void ProseDocument::mark(const QList<ParagraphMark> &marks, qsizetype from)
{
    const auto ends = std::mismatch(marks.begin(), marks.end(), m_shown.marks.begin(), m_shown.marks.end());
    const qsizetype first = std::min<qsizetype>(
        ends.first - marks.begin(), textDocument()->findBlock(static_cast<int>(from)).blockNumber());
    const double width = signWidth();
    textDocument()->setIndentWidth(width);
    for (qsizetype i = first; i < marks.size(); ++i) {
        QTextBlockFormat format;
        format.setIndent(marks[i].depth + 1);
        format.setTextIndent(marks[i].begins ? -width : 0);
        format.setTabPositions({QTextOption::Tab(width, QTextOption::LeftTab)});
        QTextCursor(textDocument()->findBlockByNumber(static_cast<int>(i))).mergeBlockFormat(format);
    }
}

} // namespace morvane
