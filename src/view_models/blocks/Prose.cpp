#include "view_models/blocks/Prose.h"

#include <QStringList>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The words with what would be read as a mark told apart.
QString escaped(QStringView words)
{
    QString text;
    for (const QChar c : words) {
        if (QStringView(u"\\`*_[]<~|").contains(c))
            text += u'\\';
        text += c;
    }
    return text.replace(u'\n', u"<br>"_s);
}

QString codeSpan(QString code)
{
    QString fence(u'`');
    while (code.contains(fence))
        fence += u'`';
    const QString gap = code.startsWith(u'`') || code.endsWith(u'`') ? u" "_s : QString();
    return fence + gap + code.replace(u'|', u"\\|"_s) + gap + fence;
}

QString markedUp(QStringView words, const AttributedText::Run &run)
{
    QString text = run.formats & AttributedText::Code ? codeSpan(words.toString()) : escaped(words);
    if (run.formats & AttributedText::Strikethrough)
        text = u"~~"_s + text + u"~~"_s;
    if (run.formats & AttributedText::Italic)
        text = u'*' + text + u'*';
    if (run.formats & AttributedText::Bold)
        text = u"**"_s + text + u"**"_s;
    return run.link.isEmpty() ? text : u'[' + text + u"]("_s + run.link + u')';
}

QString markdownOf(const AttributedText &cell)
{
    const QStringView words(cell.text);
    QString text;
    qsizetype at = 0;
    for (const AttributedText::Run &run : cell.runs) {
        text += escaped(words.sliced(at, run.start - at));
        text += markedUp(words.sliced(run.start, run.length), run);
        at = run.start + run.length;
    }
    return text + escaped(words.sliced(at));
}

QString rowOf(const QList<AttributedText> &cells)
{
    QString line(u'|');
    for (const AttributedText &cell : cells)
        line += u' ' + markdownOf(cell) + u" |"_s;
    return line;
}

} // namespace

QString TableWords::markdown() const
{
    QStringList lines{rowOf(headers), u'|' + u" --- |"_s.repeated(headers.size())};
    for (const auto &row : rows)
        lines.append(rowOf(row));
    return lines.join(u'\n');
}

QString Prose::plainText() const
{
    QStringList lines;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        if (marks.isEmpty()) {
            lines.append(parts[i].text);
            continue;
        }
        const Mark &mark = marks[i];
        lines.append(QString(qsizetype{2} * mark.depth, u' ') + mark.sign + u' ' + parts[i].text);
    }
    return lines.join(u'\n');
}

bool Prose::hasLinks() const
{
    const auto isLink = [](const AttributedText::Run &run) { return !run.link.isEmpty(); };
    return std::any_of(parts.begin(), parts.end(), [&isLink](const AttributedText &part) {
        return std::any_of(part.runs.begin(), part.runs.end(), isLink);
    });
}

} // namespace morvane
