#include "memory/NoteText.h"

#include "utils/text/Text.h"

#include <QStringList>

#include <algorithm>

namespace morvane {

namespace {

constexpr qsizetype insignificantLength = 2;

} // namespace

QString NoteText::stored(const QString &text)
{
    return Text::prefix(Text::trimmed(text), maxCharacters);
}

QString NoteText::normalized(const QString &text)
{
    const QString lowered = text.toLower().normalized(QString::NormalizationForm_C);
    QString form;
    form.reserve(lowered.size());
    bool between = false;
    for (const char32_t character : lowered.toUcs4()) {
        if (!QChar::isLetterOrNumber(character) && !QChar::isMark(character)) {
            between = !form.isEmpty();
            continue;
        }
        if (between)
            form += u' ';
        between = false;
        form += QChar::fromUcs4(character);
    }
    return form;
}

bool NoteText::matches(const QString &note, const QString &description)
{
    if (description.isEmpty())
        return false;
    if (note.contains(description))
        return true;
    QStringList words = description.split(u' ');
    words.removeIf([](const QString &word) { return Text::characterCount(word) <= insignificantLength; });
    return !words.isEmpty() && std::all_of(words.cbegin(), words.cend(),
                                           [&](const QString &word) { return note.contains(word); });
}

} // namespace morvane
