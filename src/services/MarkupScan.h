#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace morvane {

// Finds and cuts markup by fixed patterns, each in one pass over the text, however the markup is broken. A
// matcher for the general pattern may take quadratic time or run out of its limits on a hostile page.
//
// Letters compare without case; "word" is an ASCII letter, digit or underscore, "space" ASCII white space.
namespace MarkupScan {

// UTF-16 offsets.
struct Match {
    qsizetype start = 0;
    qsizetype end = 0;
    qsizetype contentStart = 0; // of an element, between its tags
    qsizetype contentEnd = 0;
};

// `<name\b[^>]*>.*?</name>`: the first element of that name.
[[nodiscard]] std::optional<Match> firstElement(QStringView text, QLatin1StringView name);

// `<title[^>]*>(.*?)</title>` with the content on one line.
[[nodiscard]] std::optional<Match> firstTitle(QStringView text);

// Each takes out, or replaces, every match from the left. They work in place: none grows the text.
void removeElements(QString &text, QLatin1StringView name);
void removeComments(QString &text);    // `<!--.*?-->`
void removeTags(QString &text);        // `<[^>]+>`
void breakAfterBlocks(QString &text);  // `</(p|div|section|article|li|tr|h[1-6])>` to a line end
void breakAtLineBreaks(QString &text); // `<br\s*/?>` to a line end
void decodeEntities(QString &text);    // the named entities of plain prose; "&amp;lt;" is "&lt;"

// Each line with runs of spaces and tabs as one space and none at its ends; empty lines go.
void tidyLines(QString &text);

} // namespace MarkupScan

} // namespace morvane
