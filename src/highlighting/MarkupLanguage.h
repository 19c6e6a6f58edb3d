#pragma once

#include "highlighting/CodeLanguage.h"

namespace morvane {

// HTML, XML and their like: tags, and between those of "script" and "style" the code of other languages.
class MarkupLanguage final : public CodeLanguage {
public:
    static constexpr QStringView names = u"html xml htm xhtml svg vue svelte xaml xsd plist markup";

    // Both outlive this one.
    MarkupLanguage(const CodeLanguage &script, const CodeLanguage &style)
        : m_script(script)
        , m_style(style)
    {}

    [[nodiscard]] Line read(QStringView line, int state) const override;

private:
    class Reader;

    const CodeLanguage &m_script;
    const CodeLanguage &m_style;
};

} // namespace morvane
