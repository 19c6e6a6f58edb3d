#include "ai/speech/WhisperLanguages.h"

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// In the order of the model's own tokens.
constexpr std::array<QLatin1StringView, WhisperLanguages::count> codes{
    "en"_L1, "zh"_L1, "de"_L1, "es"_L1, "ru"_L1, "ko"_L1, "fr"_L1, "ja"_L1, "pt"_L1, "tr"_L1, "pl"_L1,
    "ca"_L1, "nl"_L1, "ar"_L1, "sv"_L1, "it"_L1, "id"_L1, "hi"_L1, "fi"_L1, "vi"_L1, "he"_L1, "uk"_L1,
    "el"_L1, "ms"_L1, "cs"_L1, "ro"_L1, "da"_L1, "hu"_L1, "ta"_L1, "no"_L1, "th"_L1, "ur"_L1, "hr"_L1,
    "bg"_L1, "lt"_L1, "la"_L1, "mi"_L1, "ml"_L1, "cy"_L1, "sk"_L1, "te"_L1, "fa"_L1, "lv"_L1, "bn"_L1,
    "sr"_L1, "az"_L1, "sl"_L1, "kn"_L1, "et"_L1, "mk"_L1, "br"_L1, "eu"_L1, "is"_L1, "hy"_L1, "ne"_L1,
    "mn"_L1, "bs"_L1, "kk"_L1, "sq"_L1, "sw"_L1, "gl"_L1, "mr"_L1, "pa"_L1, "si"_L1, "km"_L1, "sn"_L1,
    "yo"_L1, "so"_L1, "af"_L1, "oc"_L1, "ka"_L1, "be"_L1, "tg"_L1, "sd"_L1, "gu"_L1, "am"_L1, "yi"_L1,
    "lo"_L1, "uz"_L1, "fo"_L1, "ht"_L1, "ps"_L1, "tk"_L1, "nn"_L1, "mt"_L1, "sa"_L1, "lb"_L1, "my"_L1,
    "bo"_L1, "tl"_L1, "mg"_L1, "as"_L1, "tt"_L1, "ln"_L1, "ha"_L1, "ba"_L1, "jw"_L1, "su"_L1, "haw"_L1,
};

// Where it goes by another code than everybody else's.
QString spelled(const QLocale &locale)
{
    switch (locale.language()) {
    case QLocale::C:
        return u"en"_s;
    case QLocale::NorwegianBokmal:
        return u"no"_s;
    case QLocale::Filipino:
        return u"tl"_s;
    case QLocale::Javanese:
        return u"jw"_s;
    default:
        return QLocale::languageToCode(locale.language());
    }
}

} // namespace

std::optional<QString> WhisperLanguages::codeOf(const QLocale &locale)
{
    const QString code = spelled(locale);
    return std::ranges::find(codes, code) == codes.end() ? std::nullopt : std::optional(code);
}

} // namespace morvane
