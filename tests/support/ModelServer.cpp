#include "support/ModelServer.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QStringList optionsFor(ModelServer::Interface interface, const std::vector<ModelServer::Listed> &models)
{
    QStringList options;
    if (interface == ModelServer::Interface::ollama)
        options.append(u"--ollama"_s);
    for (const ModelServer::Listed &model : models) {
        const QJsonObject object{{u"name"_s, model.name},
                                 {u"capabilities"_s, QJsonArray::fromStringList(model.capabilities)},
                                 {u"remoteHost"_s, model.remoteHost},
                                 {u"scenario"_s, model.scenario}};
        const QByteArray json = QJsonDocument(object).toJson(QJsonDocument::Compact);
        options += {u"--model"_s, QString::fromUtf8(json)};
    }
    return options;
}

} // namespace

ModelServer::ModelServer(Interface interface, const std::vector<Listed> &models)
    : ModelServer(optionsFor(interface, models))
{}

QString ModelServer::program()
{
    return QStringLiteral(MORVANE_MODEL_SERVER);
}

ModelServer::ModelServer(const QStringList &options)
    : ServerProcess(program(), QStringList{u"--log"_s, u"-"_s} + options)
{}

} // namespace morvane
