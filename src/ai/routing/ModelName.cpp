#include "ai/routing/ModelName.h"

#include <array>

using namespace Qt::StringLiterals;

namespace {

struct Family {
    QLatin1StringView prefix;
    QLatin1StringView shown;
};

constexpr std::array<Family, 7> families{{
    {QLatin1StringView("qwen"), QLatin1StringView("Qwen")},
    {QLatin1StringView("llama"), QLatin1StringView("Llama")},
    {QLatin1StringView("gemma"), QLatin1StringView("Gemma")},
    {QLatin1StringView("mistral"), QLatin1StringView("Mistral")},
    {QLatin1StringView("phi"), QLatin1StringView("Phi")},
    {QLatin1StringView("deepseek"), QLatin1StringView("DeepSeek")},
    {QLatin1StringView("gpt-oss"), QLatin1StringView("GPT-OSS")},
}};

} // namespace

QString ModelName::shortName(const QString &model)
{
    if (model == "e2ee-glm-5-3-flash"_L1)
        return u"GLM 5.3 Flash"_s;
    QString name = model.section(u':', 0, 0);
    if (name.startsWith("e2ee-"_L1))
        name = name.sliced(5);
    for (const Family &family : families) {
        if (name.startsWith(family.prefix, Qt::CaseInsensitive))
            return family.shown + name.sliced(family.prefix.size());
    }
    return name;
}
