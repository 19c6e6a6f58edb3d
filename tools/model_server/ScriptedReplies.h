#pragma once

#include "Exchange.h"

#include <vector>

namespace morvane {

// Answers from a scenario file, which come before the built-in scenarios. README.md describes the file.
class ScriptedReplies {
public:
    // False, with a sentence in `problem`, when the file can't be read or isn't a scenario file.
    [[nodiscard]] bool load(const QString &path, QString &problem);

    // The next answer for this model, used up by one; nothing when the file has none left.
    [[nodiscard]] std::optional<QJsonObject> take(const QString &model);

    static Work play(Exchange &exchange, QJsonObject answer);

private:
    struct Entry {
        QJsonObject answer;
        int timesLeft; // negative: without end
    };
    std::vector<Entry> m_entries;
};

} // namespace morvane
