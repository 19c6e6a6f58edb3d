#pragma once

#include <QList>
#include <QStringView>

namespace morvane {

// What a stretch of code is, as far as colours tell it. Names are those of functions, keys and variables.
enum class CodeToken { keyword, type, name, string, number, comment };

struct CodeSpan {
    qsizetype start = 0; // in UTF-16 units from the line's begin
    qsizetype length = 0;
    CodeToken token = CodeToken::keyword;

    bool operator==(const CodeSpan &) const = default;
};

// Reads the code of one language, line by line. What a line hands to the next one is a number, so that a
// reader who kept the number of the line before can read on from any line. Any thread.
class CodeLanguage {
public:
    static constexpr int start = 0; // before the first line

    struct Line {
        QList<CodeSpan> spans; // in order, apart from each other and never empty; what none covers is plain
        int state = start;     // for the next line
    };

    virtual ~CodeLanguage() = default;

    // `line` has no line end, and `state` is what the line before gave; any other number is taken as well.
    // Time follows the line's length.
    [[nodiscard]] virtual Line read(QStringView line, int state) const = 0;
};

} // namespace morvane
