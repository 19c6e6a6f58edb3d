#include "app/CommandLine.h"

#include "deployment/DeploymentValues.h"
#include "utils/text/Product.h"

#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <cstdio>
#include <cstdlib>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

std::optional<QString> valueOf(const QCommandLineParser &parser, const QString &option)
{
    return parser.isSet(option) ? std::optional(parser.value(option)) : std::nullopt;
}

[[noreturn]] void refuse(const char *reason)
{
    std::fputs(reason, stderr);
    std::exit(2);
}

// The desktop gives addresses of files, a terminal gives paths. Whether there is such a file shows when it is
// read.
QStringList pathsOf(const QStringList &arguments)
{
    QStringList paths;
    for (const QString &argument : arguments) {
        const QUrl url(argument);
        paths += QFileInfo(url.isLocalFile() ? url.toLocalFile() : argument).absoluteFilePath();
    }
    return paths;
}

// A question begins a chat of its own unless a Ghost chat is wanted.
AppRequest requestOf(const QCommandLineParser &parser, bool isInBackground)
{
    AppRequest request{.files = pathsOf(parser.positionalArguments()), .words = parser.value(u"ask"_s)};
    request.sends = !request.words.trimmed().isEmpty();
    if (parser.isSet(u"new-ghost-chat"_s))
        request.chat = AppRequest::Chat::ghost;
    else if (parser.isSet(u"new-chat"_s) || request.sends)
        request.chat = AppRequest::Chat::fresh;
    request.showsWindow = !isInBackground || request != AppRequest{};
    return request;
}

bool hasDevRelay()
{
    return DevRelay::origin(DeploymentValues::privateCloudURL).has_value();
}

DevRelay::Origin relayAt(const QString &place)
{
    const auto origin = DevRelay::origin(u"http://"_s + place);
    if (!origin || origin->address() != u"http://"_s + place)
        refuse("--dev-relay takes a place on this machine: 127.0.0.1:PORT or localhost:PORT.\n");
    return *origin;
}

LocalRuntimeValues runtimeIn(const QString &path, const SupportFolders &folders)
{
    constexpr qint64 largest = 1 << 16; // bytes
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        refuse("--dev-runtime: the file can't be read.\n");
    const auto values = LocalRuntimeValues::ofThisBuild(folders).withDevelopmentFile(file.read(largest));
    if (!values)
        refuse("--dev-runtime takes a JSON file of a runtime on this machine: releaseOrigin, serverOrigin, "
               "archive, "
               "sha256, bytes, foundRuntimes.\n");
    return *values;
}

} // namespace

CommandLine CommandLine::parse(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(Product::name + u", a private AI assistant."_s);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({
        {u"simulate-fresh-setup"_s, u"Set up local AI as if nothing were installed."_s},
        {u"reset-onboarding"_s, u"Show the welcome again."_s},
        {u"new-chat"_s, u"Begin a new chat, also in a program that runs already."_s},
        {u"new-ghost-chat"_s, u"Begin a new Ghost chat, also in a program that runs already."_s},
        {u"ask"_s, u"Send this in a new chat."_s, u"text"_s},
        {u"background"_s, u"Begin in the tray, with no window."_s},
        {u"profile"_s, u"Keep everything in this folder instead of your own profile."_s, u"folder"_s},
        {u"practice-server"_s, u"Chat with a practice server; needs --profile."_s, u"address"_s},
        {u"play-demo"_s, u"Play one turn, save a picture of the window and end."_s, u"png"_s},
    });
    parser.addPositionalArgument(u"files"_s, u"Documents and pictures to attach to the message."_s,
                                 u"[file…]"_s);
    const QCommandLineOption devRelay(u"dev-relay"_s, u"Where the private cloud's stand-in listens."_s,
                                      u"127.0.0.1:port"_s);
    const QCommandLineOption devRuntime(
        u"dev-runtime"_s, u"Where the local model's runtime comes from and listens."_s, u"file"_s);
    if (hasDevRelay())
        parser.addOptions({devRelay, devRuntime});
    QCommandLineOption practiceTour(u"practice-tour"_s); // for script/run
    practiceTour.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(practiceTour);
    parser.process(arguments);

    CommandLine line{.resetOnboarding = parser.isSet(u"reset-onboarding"_s),
                     .simulateFreshSetup = parser.isSet(u"simulate-fresh-setup"_s),
                     .profile = valueOf(parser, u"profile"_s),
                     .practiceServer = valueOf(parser, u"practice-server"_s),
                     .demoPicture = valueOf(parser, u"play-demo"_s),
                     .background = parser.isSet(u"background"_s)};
    if (hasDevRelay() && parser.isSet(devRelay))
        line.devRelay = relayAt(parser.value(devRelay));
    if (hasDevRelay() && parser.isSet(devRuntime))
        line.devRuntime = runtimeIn(parser.value(devRuntime), line.folders());
    line.request = requestOf(parser, line.background);
    // Both write settings, which must not be the person's own.
    if (line.practiceServer && !line.profile)
        refuse("--practice-server needs --profile, so that it changes no settings of yours.\n");
    if (hasDevRelay() && !line.profile)
        refuse("This program is for development and needs --profile, so that it changes nothing of yours.\n");
    line.practiceTour = parser.isSet(practiceTour);
    return line;
}

SupportFolders CommandLine::folders() const
{
    return profile ? SupportFolders::inProfile(QFileInfo(*profile).absoluteFilePath())
                   : SupportFolders::standard();
}

} // namespace morvane
