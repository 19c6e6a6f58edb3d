#pragma once

#include "highlighting/CodeGrammar.h"
#include "highlighting/CodeLanguage.h"

#include <QHash>
#include <QString>

namespace morvane {

// A language of words, quotes and comments, read by its grammar.
class GrammarLanguage final : public CodeLanguage {
public:
    explicit GrammarLanguage(const CodeGrammar &grammar);

    [[nodiscard]] Line read(QStringView line, int state) const override;

private:
    class Reader;

    CodeGrammar m_grammar;
    QHash<QString, CodeToken> m_words;
    qsizetype m_longestWord = 0;
};

} // namespace morvane
