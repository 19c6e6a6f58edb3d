#include "ModelList.h"

#include "Scenarios.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString replyingScenario = u"practice-fast"_s;

// Names with a number get the one that people try first.
QString firstNameOf(const Scenario &scenario)
{
    const QString name = scenario.name;
    if (name == "pieces-N"_L1)
        return u"pieces-2000"_s;
    return name == "status-N"_L1 ? u"status-500"_s : name;
}

QStringList capabilitiesOf(const QString &scenario)
{
    QStringList capabilities{u"completion"_s};
    if (scenario != "reject-tools"_L1)
        capabilities.append(u"tools"_s);
    if (scenario != "images-refused"_L1)
        capabilities.append(u"vision"_s);
    if (scenario == "thinking-fields"_L1)
        capabilities.append(u"thinking"_s);
    return capabilities;
}

} // namespace

bool ListedModel::can(const QString &capability) const
{
    return !capabilities || capabilities->contains(capability);
}

QString ListedModel::digest() const
{
    const QByteArray seed = (name + u'\n' + weights).toUtf8();
    return QString::fromLatin1(QCryptographicHash::hash(seed, QCryptographicHash::Sha256).toHex());
}

bool ModelList::add(const QString &json, QString &problem)
{
    const QJsonObject object = QJsonDocument::fromJson(json.toUtf8()).object();
    ListedModel model;
    model.name = object["name"_L1].toString();
    if (const QJsonValue list = object["capabilities"_L1]; list.isArray())
        model.capabilities = list.toVariant().toStringList();
    model.remoteHost = object["remoteHost"_L1].toString();
    model.scenario = object["scenario"_L1].toString(replyingScenario);
    model.weights = object["weights"_L1].toString();
    if (model.name.isEmpty() || !Scenarios::find(model.scenario)) {
        problem =
            u"%1 is not a model: it needs an object with a \"name\" and a known \"scenario\"."_s.arg(json);
        return false;
    }
    m_models.push_back(std::move(model));
    return true;
}

void ModelList::addScenarios()
{
    if (!m_models.empty())
        return;
    for (const auto scenarios : {Scenarios::replies(), Scenarios::broken()}) {
        for (const Scenario &scenario : scenarios) {
            const QString name = firstNameOf(scenario);
            m_models.push_back({name, capabilitiesOf(name), {}, {}, {}});
        }
    }
}

void ModelList::add(const QString &name)
{
    if (!find(name))
        m_models.push_back({name, QStringList{u"completion"_s, u"tools"_s}, {}, replyingScenario, {}});
}

void ModelList::put(ListedModel model)
{
    remove(model.name);
    m_models.push_back(std::move(model));
}

bool ModelList::remove(const QString &name)
{
    const ListedModel *model = find(name);
    if (model)
        m_models.erase(m_models.begin() + (model - m_models.data()));
    return model != nullptr;
}

const ListedModel *ModelList::find(const QString &name) const
{
    const QString tagged = name.contains(u':') ? name : name + u":latest"_s;
    const auto found = std::find_if(m_models.begin(), m_models.end(), [&](const ListedModel &model) {
        return model.name == name || model.name == tagged;
    });
    return found == m_models.end() ? nullptr : &*found;
}

QString ModelList::scenarioFor(const QString &name) const
{
    const ListedModel *model = find(name);
    return model && !model->scenario.isEmpty() ? model->scenario : name;
}

} // namespace morvane
