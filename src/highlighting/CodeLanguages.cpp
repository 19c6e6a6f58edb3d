#include "highlighting/CodeLanguages.h"

#include "highlighting/CodeGrammars.h"
#include "highlighting/GrammarLanguage.h"
#include "highlighting/MarkupLanguage.h"

#include <QHash>

#include <algorithm>
#include <memory>
#include <vector>

namespace morvane {

namespace {

class Shelf {
public:
    Shelf()
    {
        for (const CodeGrammar &grammar : CodeGrammars::all())
            add(std::make_unique<GrammarLanguage>(grammar), grammar.names);
        add(std::make_unique<MarkupLanguage>(*find(u"js"), *find(u"css")), MarkupLanguage::names);
    }

    [[nodiscard]] const CodeLanguage *find(QStringView name) const
    {
        return m_byName.value(name.toString(), nullptr);
    }

private:
    void add(std::unique_ptr<const CodeLanguage> language, QStringView names)
    {
        for (const QStringView name : names.split(u' '))
            m_byName.insert(name.toString(), language.get());
        m_languages.push_back(std::move(language));
    }

    std::vector<std::unique_ptr<const CodeLanguage>> m_languages;
    QHash<QString, const CodeLanguage *> m_byName;
};

} // namespace

const CodeLanguage *CodeLanguages::find(QStringView name)
{
    static const Shelf shelf;
    constexpr qsizetype longestName = 32;
    const QStringView begin = name.trimmed().first(std::min(name.trimmed().size(), longestName));
    const auto end = std::find_if(begin.begin(), begin.end(),
                                  [](QChar c) { return c.isSpace() || c == u'{' || c == u',' || c == u':'; });
    return shelf.find(begin.first(end - begin.begin()).toString().toLower());
}

} // namespace morvane
