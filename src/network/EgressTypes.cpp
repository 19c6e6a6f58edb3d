#include "network/EgressTypes.h"

namespace morvane {

using namespace Qt::StringLiterals;

QString labelOf(EgressFeature feature)
{
    switch (feature) {
    case EgressFeature::aiModel:
        return u"AI model"_s;
    case EgressFeature::aiSetup:
        return u"Local AI setup"_s;
    case EgressFeature::webSearch:
        return u"Web search"_s;
    case EgressFeature::webPage:
        return u"Web page"_s;
    case EgressFeature::feedback:
        return u"Feedback"_s;
    case EgressFeature::crashReports:
        return u"Crash reports"_s;
    case EgressFeature::serverList:
        return u"Private cloud server list"_s;
    case EgressFeature::speech:
        return u"Speech recognition"_s;
    }
    return {};
}

QString labelOf(SensitiveData data)
{
    switch (data) {
    case SensitiveData::screenText:
        return u"screen text"_s;
    case SensitiveData::memory:
        return u"memory notes"_s;
    case SensitiveData::image:
        return u"attached images"_s;
    case SensitiveData::voice:
        return u"your voice"_s;
    }
    return {};
}

namespace {

QString textOf(const EgressOutcome::Completed &completed)
{
    return completed.status ? u"HTTP %1"_s.arg(*completed.status) : u"Done"_s;
}

QString textOf(const EgressOutcome::Failed &failed)
{
    return u"Failed: "_s + failed.reason;
}

QString textOf(const EgressOutcome::Blocked &blocked)
{
    return u"Blocked: "_s + blocked.reason;
}

QString textOf(const EgressOutcome::InFlight &)
{
    return u"In flight"_s;
}

} // namespace

QString EgressOutcome::text() const
{
    return std::visit([](const auto &outcome) { return textOf(outcome); }, value);
}

} // namespace morvane
