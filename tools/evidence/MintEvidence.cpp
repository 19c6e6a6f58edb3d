// `mint-evidence FOLDER` writes one good proof of the test authority, piece by piece, with the command lines
// that check it. For trying morvane-proof by hand, and for the seeds of the fuzz targets.

#include "evidence/TestAuthority.h"

#include "utils/bytes/Hex.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <cstdio>
#include <stdexcept>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error(("can't write " + path).toStdString());
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
        std::fputs("usage: mint-evidence FOLDER\n", stderr);
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]) + u'/';
    const Scenario scenario;
    const QJsonObject list = scenario.signedList();
    const QByteArray text = scenario.configurationText.toUtf8();
    write(folder + u"quote.bin"_s, scenario.quoteBytes());
    write(folder + u"payload.json"_s, scenario.payload().toUtf8());
    write(folder + u"document.json"_s, QJsonDocument(scenario.document()).toJson());
    write(folder + u"list.json"_s, QJsonDocument(list).toJson());
    write(folder + u"events.json"_s,
          QJsonDocument(list["entries"_L1][0]["bootEvents"_L1].toArray()).toJson());
    const QString commands =
        u"pins='--pin intel-root=%1 --pin quoting-enclave=%2 --pin nvidia-root=%3'\n"
        "morvane-proof quote quote.bin --at 2026-09-01 $pins\n"
        "morvane-proof gpu payload.json --nonce %4 --at 2026-09-01 $pins\n"
        "morvane-proof replay events.json --compose-hash %5 --instance-id %6 --rtmr3 %8\n"
        "morvane-proof document document.json --model %7 --nonce %4 --at 2026-09-01 --accepted list.json $pins\n"_s
            .arg(scenario.pins.intelRootSHA256, scenario.pins.quotingEnclaveSigner,
                 scenario.pins.nvidiaRootSHA256, Hex::encode(scenario.nonce),
                 Hex::encode(QCryptographicHash::hash(text, QCryptographicHash::Sha256)),
                 Hex::encode(scenario.instanceID), scenario.model,
                 Hex::encode(TDXQuote::parse(scenario.quoteBytes()).report.rtmr3));
    write(folder + u"commands.sh"_s, commands.toUtf8());
    return 0;
}
