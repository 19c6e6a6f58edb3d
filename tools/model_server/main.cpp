#include "ModelService.h"
#include "Scenarios.h"

#include <boost/asio/io_context.hpp>

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

int fail(const QString &sentence)
{
    std::fprintf(stderr, "%s\n", qPrintable(sentence));
    return 1;
}

int listScenarios()
{
    for (const auto scenarios : {Scenarios::replies(), Scenarios::agents(), Scenarios::tours(),
                                 Scenarios::strict(), Scenarios::broken()}) {
        for (const Scenario &scenario : scenarios)
            std::printf("%-22s%s\n", scenario.name.data(), scenario.summary.data());
    }
    return 0;
}

void addOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(u"A model server on loopback for demos and tests."_s);
    parser.addHelpOption();
    parser.addOptions(
        {{u"port"_s, u"Port to listen on; 0 takes a free one."_s, u"number"_s, u"0"_s},
         {u"scenario"_s, u"Answers that come before the built-in ones."_s, u"file"_s},
         {u"require-key"_s, u"Refuse requests without this bearer key."_s, u"key"_s},
         {u"strict"_s, u"Refuse what such a service refuses: cloud or llama."_s, u"manner"_s},
         {u"ollama"_s, u"Speak Ollama's own interface too."_s},
         {u"model"_s, u"List this model; may be given again. Without it every scenario is listed."_s,
          u"json"_s},
         {u"log"_s, u"Write each request as a line of JSON; - is standard output."_s, u"file"_s},
         {u"list"_s, u"List the model names and what each does."_s}});
}

int serve(const QCommandLineParser &options)
{
    bool isPort = false;
    ModelService::Settings settings;
    const std::uint16_t port = options.value(u"port"_s).toUShort(&isPort);
    settings.requiredKey = options.value(u"require-key"_s).toUtf8();
    if (!isPort)
        return fail(u"The port is a number from 0 to 65535."_s);
    settings.speaksOllama = options.isSet(u"ollama"_s);
    settings.manner = options.value(u"strict"_s);
    QString problem;
    for (const QString &model : options.values(u"model"_s)) {
        if (!settings.models.add(model, problem))
            return fail(problem);
    }
    settings.models.addScenarios();

    RequestLog log;
    if (!log.open(options.value(u"log"_s)))
        return fail(u"Cannot write %1."_s.arg(options.value(u"log"_s)));
    AnswerScript script;
    if (options.isSet(u"scenario"_s) && !script.load(options.value(u"scenario"_s), problem))
        return fail(problem);

    boost::asio::io_context context(1);
    ModelService service(settings, script);
    WireRecord unrecorded;
    Server(context, port, service, log, unrecorded).run();
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
        return listScenarios();
    try {
        return serve(options);
    } catch (const std::exception &error) {
        return fail(u"Cannot listen: %1."_s.arg(QString::fromLocal8Bit(error.what())));
    }
}
