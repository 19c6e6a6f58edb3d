#include "Installation.h"
#include "RuntimeService.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>

#include <QDir>
#include <QJsonArray>

#include <csignal>
#include <cstdio>
#include <sys/prctl.h>
#include <unistd.h>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace asio = boost::asio;

namespace {

constexpr const char *versionNumber = "0.34.0";

// What whoever started this program gave it along.
QJsonObject birth()
{
    QJsonArray descriptors;
    for (const QString &name :
         QDir(u"/proc/self/fd"_s).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)) {
        const QString target = QFile::symLinkTarget(u"/proc/self/fd/"_s + name);
        if (name.toInt() > STDERR_FILENO && !target.isEmpty() && !target.startsWith("/proc/"_L1))
            descriptors.append(target);
    }
    QJsonArray environment;
    for (char **entry = environ; *entry; ++entry)
        environment.append(QString::fromLocal8Bit(*entry).section(u'=', 0, 0));
    int deathSignal = 0;
    ::prctl(PR_GET_PDEATHSIG, &deathSignal);
    return {{u"event"_s, u"serve"_s},
            {u"process"_s, ::getpid()},
            {u"group"_s, ::getpgrp()},
            {u"deathSignal"_s, deathSignal},
            {u"binary"_s, Installation::binary()},
            {u"isWhole"_s, Installation::isWhole()},
            {u"descriptors"_s, descriptors},
            {u"environment"_s, environment}};
}

// "127.0.0.1:11434", with or without a scheme; either half may be missing.
asio::ip::tcp::endpoint endpoint(bool everywhere)
{
    QString host = qEnvironmentVariable("OLLAMA_HOST");
    host.remove(u"http://"_s);
    bool isPort = false;
    const std::uint16_t port = host.section(u':', 1).toUShort(&isPort);
    const QString name = host.section(u':', 0, 0);
    const bool isNamed = !name.isEmpty() && name != "localhost"_L1;
    const auto address =
        isNamed ? asio::ip::make_address(name.toStdString()) : asio::ip::address_v4::loopback();
    return {everywhere ? asio::ip::address(asio::ip::address_v4::any()) : address,
            isPort ? port : std::uint16_t(11434)};
}

// Only its presence matters here: nobody is asked who this is.
void makeIdentityKey(const QString &path)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly,
                   QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        return;
    file.write("A practice key, which opens nothing.\n");
}

bool makesKey(const PracticeFolder &folder)
{
    const QString scenario = folder.scenario();
    return scenario != "lost-key"_L1 && (scenario != "lost-key-once"_L1 || folder.wasMarked(u"first-run"_s));
}

int serve()
{
    const PracticeFolder folder = PracticeFolder::ofThisProgram();
    folder.note(birth());
    const QString scenario = folder.scenario();
    if (scenario == "dies-at-start"_L1) {
        std::fputs("Error: the practice runtime was told to end.\n", stderr);
        return 1;
    }
    while (scenario == "never-listens"_L1)
        ::pause();
    if (scenario == "slow-start"_L1)
        ::sleep(2);

    const QString home = QDir::homePath() + u"/.ollama"_s;
    const QString models = qEnvironmentVariable("OLLAMA_MODELS", home + u"/models"_s);
    const QString key = home + u"/id_ed25519"_s;
    if (makesKey(folder))
        makeIdentityKey(key);

    asio::io_context context(1);
    RuntimeService service({models, key}, folder);
    RequestLog log;
    if (!log.open(qEnvironmentVariable("MORVANE_RUNTIME_LOG")))
        return 1;
    WireRecord record;
    Server server(context, endpoint(scenario == "all-interfaces"_L1), service, log, record);
    asio::signal_set signals(context);
    if (scenario == "stubborn"_L1) {
        for (const int each : {SIGINT, SIGTERM, SIGHUP})
            std::signal(each, SIG_IGN);
    } else {
        signals.add(SIGINT);
        signals.add(SIGTERM);
        signals.async_wait([&context](const boost::system::error_code &, int) { context.stop(); });
    }
    server.listen();
    folder.note({{u"event"_s, u"listening"_s}, {u"port"_s, server.port()}});
    std::fprintf(stderr, "level=INFO msg=\"Listening on port %u (version %s)\"\n",
                 static_cast<unsigned>(server.port()), versionNumber);
    context.run();
    folder.note({{u"event"_s, u"end"_s}, {u"process"_s, ::getpid()}});
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const QByteArrayView word = argc == 2 ? argv[1] : "";
    if (word == "--version" || word == "-v") {
        std::printf("ollama version is %s\n", versionNumber);
        return 0;
    }
    while (word == "runner")
        ::pause();
    if (word != "serve") {
        std::fputs("Usage:\n  ollama serve\n  ollama --version\n", stderr);
        return 1;
    }
    try {
        return serve();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "Error: %s\n", error.what());
        return 1;
    }
}
