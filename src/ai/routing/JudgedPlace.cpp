#include "ai/routing/JudgedPlace.h"

namespace morvane {

using Kind = ChatSource::Kind;

JudgedPlace JudgedPlace::privateCloud()
{
    return {{Kind::morvaneCloud, {}, {}}, {PrivacyClass::Kind::leavesThisNetwork, {}}};
}

JudgedPlace JudgedPlace::of(const QString &baseURL, const QString &model,
                            const std::optional<PrivacyClass> &privacy)
{
    if (privacy && privacy->kind == PrivacyClass::Kind::cloudModel)
        return {{Kind::ollamaCloud, {}, model}, *privacy};
    return {ChatSource::of(baseURL, model), privacy.value_or(PrivacyClass{})};
}

ProofLedger::Place JudgedPlace::inLedger(const QString &model) const
{
    using Row = ProofLedger::Place::Kind;
    switch (source.kind) {
    case Kind::thisMac:
    case Kind::notConfigured:
        return {Row::thisMac, model, {}};
    case Kind::network:
        return {Row::network, model, source.host};
    case Kind::ollamaCloud:
        return {Row::ollamaCloud, model, {}};
    case Kind::morvaneCloud:
        return {Row::morvaneCloud, model, {}};
    case Kind::customCloud:
        return {Row::yourOwnService, model, source.host};
    }
    return {};
}

} // namespace morvane
