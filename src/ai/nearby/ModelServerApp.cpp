#include "ai/nearby/ModelServerApp.h"

#include "utils/text/DesktopWords.h"

namespace morvane {

using namespace Qt::StringLiterals;

QString ModelServerApps::displayName(ModelServerApp app)
{
    switch (app) {
    case ModelServerApp::ollama:
        return u"Ollama"_s;
    case ModelServerApp::lmStudio:
        return u"LM Studio"_s;
    case ModelServerApp::other:
        break;
    }
    return u"the model server"_s;
}

std::vector<int> ModelServerApps::ports(ModelServerApp app)
{
    switch (app) {
    case ModelServerApp::ollama:
        return {11434};
    case ModelServerApp::lmStudio:
        return {1234};
    case ModelServerApp::other:
        break;
    }
    return {8080, 8000};
}

ModelServerApps::SetupSteps ModelServerApps::setupSteps(ModelServerApp app)
{
    const DesktopWords &words = DesktopWords::here();
    const QString check = u"Also check that both %1s are on the same Wi-Fi or network."_s.arg(words.device);
    switch (app) {
    case ModelServerApp::ollama:
        return {u"On that %1, open %2 and run this once, then try again here:"_s.arg(words.device,
                                                                                     words.terminal),
                words.ollamaListensToAll.toString(), words.ollamaWithoutService.toString(), check};
    case ModelServerApp::lmStudio:
        return {u"On that %1, open LM Studio → Developer/Server tab, start the server, and turn on “Serve on "
                u"Local Network”. Then try again here."_s.arg(words.device),
                {},
                {},
                check};
    case ModelServerApp::other:
        break;
    }
    return {u"On that %1, set the model server to listen on all network interfaces (often 0.0.0.0 instead of "
            u"127.0.0.1), then try again here."_s.arg(words.device),
            {},
            {},
            check};
}

} // namespace morvane
