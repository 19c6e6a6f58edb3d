#include "services/ScreenLanguages.h"

#include <QHash>
#include <QLocale>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Language data is named after ISO 639-2, but for these.
QString codeOf(const QLocale &locale)
{
    if (locale.language() == QLocale::Chinese)
        return locale.script() == QLocale::TraditionalHanScript ? u"chi_tra"_s : u"chi_sim"_s;
    if (locale.language() == QLocale::Serbian && locale.script() == QLocale::LatinScript)
        return u"srp_latn"_s;
    if (locale.language() == QLocale::Uzbek && locale.script() == QLocale::CyrillicScript)
        return u"uzb_cyrl"_s;
    if (locale.language() == QLocale::Azerbaijani && locale.script() == QLocale::CyrillicScript)
        return u"aze_cyrl"_s;
    if (locale.language() == QLocale::NorwegianBokmal || locale.language() == QLocale::NorwegianNynorsk)
        return u"nor"_s;
    return QLocale::languageToCode(locale.language(), QLocale::ISO639Part2T);
}

} // namespace

QStringList ScreenLanguages::codesFor(const QStringList &uiLanguages)
{
    const QString english = u"eng"_s;
    QStringList codes;
    for (const QString &language : uiLanguages) {
        const QLocale locale(language);
        const QString code = locale.language() == QLocale::C ? QString() : codeOf(locale);
        if (!code.isEmpty() && code != english) {
            codes.append(code);
            break;
        }
    }
    codes.append(english);
    return codes;
}

} // namespace morvane
