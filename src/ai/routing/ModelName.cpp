#include "ai/routing/ModelName.h"

#include <QRegularExpression>

#include <array>

namespace morvane {

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

// What stands behind the colon; "registry:5000/name" has none.
QString tagOf(const QString &model)
{
    const qsizetype colon = model.lastIndexOf(u':');
    return colon > model.lastIndexOf(u'/') ? model.sliced(colon + 1) : QString();
}

QString withTag(const QString &model)
{
    return tagOf(model).isEmpty() ? model + u":latest"_s : model;
}

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

bool ModelName::isOllamaCloud(const QString &model)
{
    const QString tag = tagOf(model.trimmed()).toLower();
    return tag == "cloud"_L1 || tag.endsWith("-cloud"_L1);
}

double ModelName::parameterCount(const QString &model)
{
    static const QRegularExpression count(u"(\\d+(?:\\.\\d+)?)b\\b"_s);
    return count.match(model.toLower()).captured(1).toDouble();
}

bool ModelName::isSame(const QString &left, const QString &right)
{
    return withTag(left.trimmed()) == withTag(right.trimmed());
}

} // namespace morvane
