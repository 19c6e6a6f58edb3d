#include "audio/engines/PlainEnglish.h"

#include <QString>

#include <algorithm>
#include <array>
#include <utility>

namespace morvane {

namespace {

// What compatibility decomposition leaves as it is.
constexpr std::array spellings{
    std::pair{u'‘', "'"},       std::pair{u'’', "'"},         std::pair{u'“', "\""},
    std::pair{u'”', "\""},      std::pair{u'–', ", "},        std::pair{u'—', ", "},
    std::pair{u'−', " minus "}, std::pair{u'×', " times "},   std::pair{u'÷', " divided by "},
    std::pair{u'≈', " about "}, std::pair{u'°', " degrees "}, std::pair{u'€', " euro "},
    std::pair{u'£', " pound "}, std::pair{u'ß', "ss"},        std::pair{u'æ', "ae"},
    std::pair{u'Æ', "Ae"},      std::pair{u'ø', "o"},         std::pair{u'Ø', "O"},
    std::pair{u'ł', "l"},       std::pair{u'→', " to "},      std::pair{u'•', ", "},
};

} // namespace

QByteArray PlainEnglish::of(QStringView text)
{
    QByteArray plain;
    for (const QChar c : text.toString().normalized(QString::NormalizationForm_KD)) {
        const auto spelling =
            std::ranges::find(spellings, c.unicode(), &std::pair<char16_t, const char *>::first);
        if (spelling != spellings.end())
            plain += spelling->second;
        else if (c.isSpace())
            plain += ' ';
        else if (c.unicode() >= 0x20 && c.unicode() < 0x7f)
            plain += static_cast<char>(c.unicode());
    }
    const bool hasWords = std::ranges::any_of(plain, [](char c) { return QChar::isLetterOrNumber(c); });
    return hasWords ? plain : QByteArray();
}

} // namespace morvane
