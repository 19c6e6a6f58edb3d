#include "Serve.h"

#include "CloudScenarios.h"
#include "PrivateCloudService.h"

#include <QCommandLineParser>

#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

std::runtime_error problem(const QString &words)
{
    return std::runtime_error(words.toStdString());
}

void parse(QCommandLineParser &options, const QStringList &words)
{
    options.addOptions({{u"port"_s, QString(), u"number"_s, u"0"_s},
                        {u"list"_s, QString(), u"name"_s, u"good"_s},
                        {u"built-in"_s, QString(), u"scenario"_s},
                        {u"require-key"_s, QString(), u"key"_s},
                        {u"scenario"_s, QString(), u"file"_s},
                        {u"log"_s, QString(), u"file"_s},
                        {u"record"_s, QString(), u"file"_s}});
    if (!options.parse(QStringList{u"serve"_s} + words))
        throw problem(options.errorText());
    if (!options.positionalArguments().isEmpty())
        throw problem(u"\"%1\" means nothing here"_s.arg(options.positionalArguments().first()));
}

std::uint16_t portOf(const QCommandLineParser &options)
{
    bool isPort = false;
    const std::uint16_t port = options.value(u"port"_s).toUShort(&isPort);
    if (!isPort)
        throw problem(u"the port is a number from 0 to 65535"_s);
    return port;
}

QByteArray line(QLatin1StringView name, QLatin1StringView summary)
{
    return "  " + QByteArray(name.data(), name.size()).leftJustified(34) +
           QByteArray(summary.data(), summary.size()) + '\n';
}

} // namespace

QByteArray Serve::help()
{
    QByteArray text = "morvane-private-cloud serve                    the server itself, on loopback\n"
                      "  --port N            port to listen on; 0, the default, takes a free one\n"
                      "  --list NAME         the list of accepted servers, below; good is the default\n"
                      "  --built-in MODEL    the scenario that e2ee-glm-5-3-flash plays\n"
                      "  --require-key KEY   HTTP 401 to a chat without Authorization: Bearer KEY\n"
                      "  --scenario FILE     answers that come before the built-in ones\n"
                      "  --log FILE          each request as a line of JSON; - is standard output\n"
                      "  --record FILE       every byte both ways, in lines of JSON\n"
                      "\nModels, each a scenario:\n";
    for (const CloudScenario &scenario : CloudScenarios::all())
        text += line(scenario.model, scenario.summary);
    text += "\nLists:\n";
    for (const ServedLists::Kind &kind : ServedLists::kinds())
        text += line(kind.name, kind.summary);
    return text;
}

void Serve::run(const QStringList &words)
{
    QCommandLineParser options;
    parse(options, words);
    const std::uint16_t port = portOf(options);
    RequestLog log;
    if (!log.open(options.value(u"log"_s)))
        throw problem(u"can't write %1"_s.arg(options.value(u"log"_s)));
    WireRecord record;
    if (!record.open(options.value(u"record"_s)))
        throw problem(u"can't write %1"_s.arg(options.value(u"record"_s)));
    AnswerScript script;
    QString trouble;
    if (options.isSet(u"scenario"_s) && !script.load(options.value(u"scenario"_s), trouble))
        throw problem(trouble);

    boost::asio::io_context context(1);
    PrivateCloudService service(
        {options.value(u"list"_s), options.value(u"built-in"_s), options.value(u"require-key"_s).toUtf8()},
        script);
    Server(context, port, service, log, record).run();
}

} // namespace morvane
