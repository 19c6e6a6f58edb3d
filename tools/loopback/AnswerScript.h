#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>
#include <vector>

namespace morvane {

// Answers from a scenario file, which come before a server's own scenarios:
//   {"responses": [{"model": …, "times": …, …}, …]}
class AnswerScript {
public:
    // False, with a sentence in `problem`, when the file can't be read or isn't a scenario file.
    [[nodiscard]] bool load(const QString &path, QString &problem);

    // The first answer that fits what is asked, used up by one; nothing when the file has none left. Each key
    // of `asked` that an answer has too must hold the same text there.
    [[nodiscard]] std::optional<QJsonObject> take(const QJsonObject &asked);

private:
    struct Entry {
        QJsonObject answer;
        int timesLeft; // negative: without end
    };
    std::vector<Entry> m_entries;
};

} // namespace morvane
