#include "ai/routing/SourceOption.h"

#include "utils/text/Text.h"

namespace morvane {

using namespace Qt::StringLiterals;
using Kind = ChatSource::Kind;

namespace {

std::optional<QString> privateCloudProblem(const SourceOption::Facts &facts)
{
    if (!facts.knowsPrivateCloud)
        return u"This build has no private cloud."_s;
    if (facts.configured.kind == Kind::customCloud)
        return SourceOption::customServiceNotice();
    if (!facts.offersSealedChats)
        return u"The private cloud does not offer sealed chats yet."_s;
    return std::nullopt;
}

std::optional<QString> localProblem(const SourceOption::Facts &facts)
{
    if (facts.configured.kind != Kind::thisMac && facts.configured.kind != Kind::notConfigured)
        return u"Settings > AI names another place for replies."_s;
    switch (facts.local) {
    case LocalModelServing::State::installing:
        return u"The local model is still being installed."_s;
    case LocalModelServing::State::starting:
        return u"The local model is starting."_s;
    case LocalModelServing::State::failed:
        return u"The local model did not start."_s;
    case LocalModelServing::State::absent: // a runtime that the person keeps themselves may serve it
    case LocalModelServing::State::ready:
        break;
    }
    if (Text::trimmed(facts.model).isEmpty())
        return u"No local model is set up yet. Settings > AI sets one up."_s;
    return std::nullopt;
}

bool isElsewhere(const ChatSource &source)
{
    return source.kind == Kind::network || source.kind == Kind::customCloud ||
           source.kind == Kind::ollamaCloud;
}

} // namespace

QString SourceOption::customServiceNotice()
{
    return u"Private cloud is off while chat goes to the AI service you added in Settings > AI."_s;
}

std::vector<SourceOption> SourceOption::all(const Facts &facts)
{
    const ChatSource cloud{Kind::morvaneCloud, {}, {}};
    const bool isLocal = facts.configured.kind == Kind::thisMac;
    const ChatSource local = isLocal ? facts.configured : ChatSource{Kind::thisMac, {}, {}};
    std::vector<SourceOption> options{
        {Choice::local, local, isLocal && !facts.model.isEmpty() ? local.label() : u"Local"_s,
         local.destination(), isLocal && facts.active == local, localProblem(facts)}};
    if (isElsewhere(facts.configured)) {
        const bool lacksModel = Text::trimmed(facts.model).isEmpty();
        options.push_back(
            {Choice::configured, facts.configured, facts.configured.label(), facts.configured.destination(),
             facts.active == facts.configured,
             lacksModel ? std::optional(u"No model is chosen in Settings > AI."_s) : std::nullopt});
    }
    options.push_back({Choice::privateCloud, cloud, facts.privateCloudName, cloud.destination(),
                       facts.active == cloud, privateCloudProblem(facts)});
    return options;
}

} // namespace morvane
