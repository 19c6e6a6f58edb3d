// Any code in any language, begun in any state: what is told of a line lies in it and in order. The first
// byte picks the language, the next four the state.

#include "fuzz/Fuzz.h"

#include "highlighting/CodeLanguages.h"

#include <cstring>
#include <iterator>

void morvane::fuzz(QByteArrayView input)
{
    static constexpr QStringView names[] = {u"py",  u"js",   u"ts",   u"java",   u"c",   u"c++",  u"c#",
                                            u"go",  u"rust", u"php",  u"ruby",   u"sql", u"sh",   u"ps1",
                                            u"css", u"json", u"yaml", u"kotlin", u"xml", u"swift"};
    if (input.size() < 5)
        return;
    const CodeLanguage *language =
        CodeLanguages::find(names[static_cast<uchar>(input[0]) % std::size(names)]);
    require(language);
    int state = 0;
    std::memcpy(&state, input.data() + 1, sizeof state);
    const QString text = QString::fromUtf8(input.sliced(5));
    for (const QStringView line : QStringView(text).split(u'\n')) {
        const CodeLanguage::Line read = language->read(line, state);
        qsizetype end = 0;
        for (const CodeSpan &span : read.spans) {
            require(span.start >= end && span.length > 0 && span.start + span.length <= line.size());
            end = span.start + span.length;
        }
        state = read.state;
    }
}
