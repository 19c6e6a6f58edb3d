#include "DevelopmentAuthority.h"

#include "utils/bytes/Hex.h"

#include <QJsonArray>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The address at which script/run and the development program look for the server.
const QString address = u"http://127.0.0.1:8741/v1"_s;

// The same server as a build's deployment values describe it.
QJsonObject builtInServer()
{
    QJsonObject server = DevelopmentAuthority::listEntry(QString(DevelopmentAuthority::builtInID),
                                                         QString(DevelopmentAuthority::builtInModel));
    QJsonObject configuration = server.take("configuration"_L1).toObject();
    configuration.insert("id"_L1, server.take("id"_L1));
    server.insert("configurations"_L1, QJsonArray{configuration});
    server.insert("label"_L1, server.take("stackLabel"_L1));
    server.insert("requiresGPUEvidence"_L1, true);
    return server;
}

} // namespace

const EvidenceAuthority &DevelopmentAuthority::authority()
{
    static const EvidenceAuthority authority = EvidenceAuthority::read(u":/authority"_s);
    return authority;
}

Scenario DevelopmentAuthority::server()
{
    Scenario server(authority());
    server.stack.label = u"Development stack"_s;
    server.stack.configurations.front().label = u"Development configuration"_s;
    return server;
}

QJsonObject DevelopmentAuthority::listEntry(const QString &id, const QString &model)
{
    QJsonObject entry = server().signedList()["entries"_L1][0].toObject();
    entry["id"_L1] = id;
    entry["model"_L1] = model;
    return entry;
}

QJsonObject DevelopmentAuthority::newerListEntry(const QString &id, const QString &model)
{
    QJsonObject entry = listEntry(id, model);
    entry["mrtd"_L1] = Hex::encode(newerImage());
    return entry;
}

QByteArray DevelopmentAuthority::newerImage()
{
    return QByteArray(48, '\x7d');
}

QJsonObject DevelopmentAuthority::deploymentValues()
{
    const EvidencePins pins = authority().pins();
    const QString listKey = QString::fromLatin1(authority().listKey.publicKey().toBase64());
    return {{u"intelRootSHA256"_s, pins.intelRootSHA256},
            {u"quotingEnclaveSigner"_s, pins.quotingEnclaveSigner},
            {u"nvidiaRootSHA256"_s, pins.nvidiaRootSHA256},
            {u"listSigningKeys"_s, QJsonArray{listKey}},
            {u"privateCloudURL"_s, address},
            {u"acceptedServers"_s, QJsonArray{builtInServer()}}};
}

} // namespace morvane
