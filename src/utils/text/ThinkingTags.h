#pragma once

#include <QString>
#include <QStringView>

namespace morvane {

// What a reasoning model thinks before it answers, where its server leaves that in the text of the reply:
// between
// "<think>" and "</think>" at the start. Some templates of prompts hold the opening tag themselves; then only
// the closing one comes, on a line of its own.
//
// Tags anywhere else are words like others. Time grows with the length of the text.
namespace ThinkingTags {

inline constexpr QStringView opening = u"<think>";
inline constexpr QStringView closing = u"</think>";

enum class Extent {
    whole,
    growing, // an end that may yet become a tag is in neither part
};

struct Parts {
    QString thinking;    // without its tags; sections apart by an empty line; empty for none
    QString answer;      // the text as it is where no thinking stands before it
    bool isOpen = false; // the text ends before the thinking does
};

[[nodiscard]] Parts split(const QString &text, Extent extent = Extent::whole);
[[nodiscard]] QString answer(const QString &text);

// The text so far with one more reply behind it, all that was thought for either at the start.
[[nodiscard]] QString joined(const QString &before, const QString &reply);

} // namespace ThinkingTags

} // namespace morvane
