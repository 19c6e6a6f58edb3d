#include "Scenarios.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

bool matches(const Scenario &scenario, const QString &model)
{
    if (!scenario.name.endsWith("-N"_L1))
        return model == scenario.name;
    const QLatin1StringView stem = scenario.name.chopped(1);
    return model.startsWith(stem) && Scenarios::number(model) > 0;
}

} // namespace

const Scenario *Scenarios::find(const QString &model)
{
    for (const auto scenarios : {replies(), agents(), tours(), strict(), broken()}) {
        for (const Scenario &scenario : scenarios) {
            if (matches(scenario, model))
                return &scenario;
        }
    }
    return nullptr;
}

int Scenarios::number(const QString &model)
{
    return model.mid(model.lastIndexOf(u'-') + 1).toInt();
}

QString Scenarios::practiceText(const Request &request)
{
    constexpr qsizetype echoed = 120;
    QString said = request.lastUserText().simplified();
    if (said == "Reply with the single word: ok"_L1)
        return u"ok, says the practice server"_s;
    if (said.size() > echoed) {
        const bool splitsPair = said.at(echoed - 1).isHighSurrogate();
        said = said.first(splitsPair ? echoed - 1 : echoed) + u'…';
    }
    return u"This reply comes from the practice server, which runs on this computer. No model is thinking "
           "behind it: the words are prepared, and nothing you type leaves this machine. You wrote: “%1”. "
           "Once a model is connected in Settings, its answer will stand here instead."_s.arg(said);
}

} // namespace morvane
