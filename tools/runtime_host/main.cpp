#include "Delivery.h"
#include "ReleaseService.h"
#include "RuntimeArchive.h"
#include "runtime/RuntimeScenarios.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>

#include <cstdio>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

int fail(const QString &sentence)
{
    std::fprintf(stderr, "%s\n", qPrintable(sentence));
    return 1;
}

template <typename Kind>
void list(const char *title, std::span<const Kind> kinds)
{
    std::printf("%s\n", title);
    for (const Kind &kind : kinds)
        std::printf("  %-20s%s\n", kind.name.data(), kind.summary.data());
}

int listAll()
{
    list("Deliveries:", Delivery::kinds());
    list("Archives:", RuntimeArchive::kinds());
    list("Runtimes, by the name in the file `scenario` of their folder:", RuntimeScenarios::kinds());
    return 0;
}

void addOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(u"A release host on loopback for a runtime that is made on the spot."_s);
    parser.addHelpOption();
    parser.addOptions(
        {{u"port"_s, u"Port to listen on; 0 takes a free one."_s, u"number"_s, u"0"_s},
         {u"name"_s, u"What the archive is called."_s, u"file"_s, u"ollama-linux-amd64.tar.zst"_s},
         {u"archive"_s, u"What is in it."_s, u"name"_s, u"good"_s},
         {u"delivery"_s, u"How it comes."_s, u"name"_s, u"good"_s},
         {u"folder"_s, u"Where the runtime reads its scenario and writes its journal."_s, u"folder"_s},
         {u"log"_s, u"Write each request as a line of JSON; - is standard output."_s, u"file"_s},
         {u"list"_s, u"List the names and what each does."_s}});
}

QString origin(std::uint16_t port)
{
    return u"http://127.0.0.1:%1"_s.arg(port);
}

// Nobody listens there now.
std::uint16_t freePort(boost::asio::io_context &context)
{
    using Acceptor = boost::asio::ip::tcp::acceptor;
    return Acceptor(context, {boost::asio::ip::address_v4::loopback(), 0}).local_endpoint().port();
}

// What the development program must be told to fetch this archive, to believe it, and to have its runtime
// listen where nobody else does. No runtime of this machine's own is found.
QByteArray description(const QByteArray &archive, const QString &name, std::uint16_t port,
                       std::uint16_t serverPort)
{
    const QByteArray digest = QCryptographicHash::hash(archive, QCryptographicHash::Sha256).toHex();
    const QJsonObject object{{u"releaseOrigin"_s, origin(port)},         {u"archive"_s, name},
                             {u"sha256"_s, QString::fromLatin1(digest)}, {u"bytes"_s, archive.size()},
                             {u"serverOrigin"_s, origin(serverPort)},    {u"foundRuntimes"_s, QJsonArray()}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

int serve(const QCommandLineParser &options)
{
    bool isPort = false;
    const std::uint16_t port = options.value(u"port"_s).toUShort(&isPort);
    if (!isPort)
        return fail(u"The port is a number from 0 to 65535."_s);
    const RuntimeArchive::Recipe recipe{
        options.value(u"archive"_s), QCoreApplication::applicationDirPath() + u"/morvane-practice-runtime"_s,
        options.value(u"folder"_s)};
    const QString delivery = options.value(u"delivery"_s);
    if (!RuntimeArchive::has(recipe.kind) || !Delivery::has(delivery))
        return fail(u"There is no such archive or delivery; --list names them."_s);
    RequestLog log;
    if (!log.open(options.value(u"log"_s)))
        return fail(u"Cannot write %1."_s.arg(options.value(u"log"_s)));

    const QByteArray archive = RuntimeArchive::make(recipe);
    ReleaseService service(options.value(u"name"_s).toUtf8(), archive, PracticeFolder(recipe.folder));
    service.setDelivery(delivery);
    boost::asio::io_context context(1);
    WireRecord unrecorded;
    Server storage(context, 0, service, log, unrecorded);
    Server host(context, port, service, log, unrecorded);
    service.setStoragePort(storage.port());
    const QByteArray line = description(archive, options.value(u"name"_s), host.port(), freePort(context));
    std::printf("%s\n", line.constData());
    storage.listen();
    host.run();
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser options;
    addOptions(options);
    options.process(application);
    if (options.isSet(u"list"_s))
        return listAll();
    try {
        return serve(options);
    } catch (const std::exception &error) {
        return fail(u"Cannot serve: %1."_s.arg(QString::fromLocal8Bit(error.what())));
    }
}
