#include "attestation/evidence/VeniceMeasurementAllowlist.h"

#include "attestation/evidence/CaseText.h"
#include "utils/bytes/Hex.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <QLocale>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Stack = VeniceMeasurementAllowlist::Stack;
using Match = VeniceMeasurementAllowlist::Match;
using Refusal = VeniceMeasurementAllowlist::Refusal;
using Source = VeniceMeasurementAllowlist::Source;

// What a report shows, in the form that lists state it.
struct Image {
    explicit Image(const TDXQuote::TDReport &report)
        : mrtd(Hex::encode(report.mrtd))
        , rtmr0(Hex::encode(report.rtmr0))
        , rtmr1(Hex::encode(report.rtmr1))
        , rtmr2(Hex::encode(report.rtmr2))
    {}

    [[nodiscard]] bool isOf(const Stack &stack) const
    {
        return stack.mrtd.toLower() == mrtd && stack.rtmr0.toLower() == rtmr0 &&
               stack.rtmr1.toLower() == rtmr1 && stack.rtmr2.toLower() == rtmr2;
    }

    QString mrtd;
    QString rtmr0;
    QString rtmr1;
    QString rtmr2;
};

// A configuration as one server shows it. The hash is the one its hardware signed.
struct LiveConfiguration {
    QByteArray text;
    QByteArray composeHash;
    QByteArray instanceID;
    QByteArray rtmr3;
};

LiveConfiguration requireBoundConfiguration(const TDXQuote::TDReport &report,
                                            const std::optional<QString> &text,
                                            const std::optional<QByteArray> &instanceID)
{
    if (!text || !instanceID)
        throw Refusal(Refusal::Case::configurationMissing);
    const QByteArray bytes = text->toUtf8();
    const auto composeHash = report.composeHash();
    if (!composeHash || VeniceReviewedConfiguration::expectedMrconfigid(bytes) != report.mrconfigid)
        throw Refusal(Refusal::Case::configurationHashMismatch);
    return {bytes, *composeHash, *instanceID, report.rtmr3};
}

// The host label when `configuration` accepts the server; otherwise how far it got.
std::variant<QString, Refusal::Case> judge(const LiveConfiguration &live, const Stack &stack,
                                           const VeniceReviewedConfiguration &configuration)
{
    const auto label = configuration.hostLabelBytes(live.text);
    if (!label)
        return Refusal::Case::configurationNotReviewed;
    if (!VeniceReviewedConfiguration::isAllowedHostLabel(*label))
        return Refusal::Case::hostLabelNotAllowed;
    if (VeniceBootEvent::replay(stack.bootEvents, live.composeHash, live.instanceID) != live.rtmr3)
        return Refusal::Case::bootMeasurementMismatch;
    return QString::fromUtf8(*label);
}

QString dateText(const QDateTime &date)
{
    return QLocale::c().toString(date.toUTC().date(), u"MMMM d, yyyy"_s);
}

struct SourceText {
    QString operator()(const Source::SignedList &s) const
    {
        return u"Version %1, signed by Morvane, good until %2"_s.arg(s.version).arg(dateText(s.notAfter));
    }
    QString operator()(const Source::ExpiredList &s) const
    {
        return u"Version %1 expired on %2. Until a newer list arrives, this %3 accepts only the servers "
               "built into this version of %4."_s.arg(s.version)
                   .arg(dateText(s.notAfter), DesktopWords::here().device, QString(Product::name));
    }
    QString operator()(const Source::Bundled &) const
    {
        return u"Built into this version of %1"_s.arg(QString(Product::name));
    }
};

} // namespace

bool VeniceMeasurementAllowlist::Stack::isImageOf(const TDXQuote::TDReport &report) const
{
    return Image(report).isOf(*this);
}

QString VeniceMeasurementAllowlist::Refusal::caseText() const
{
    switch (m_case) {
    case Case::imageNotListed:
        return u"imageNotListed"_s;
    case Case::configurationMissing:
        return u"configurationMissing"_s;
    case Case::configurationHashMismatch:
        return u"configurationHashMismatch"_s;
    case Case::configurationNotReviewed:
        return u"configurationNotReviewed"_s;
    case Case::hostLabelNotAllowed:
        return u"hostLabelNotAllowed"_s;
    case Case::bootMeasurementMismatch:
        return u"bootMeasurementMismatch"_s;
    }
    return {};
}

QString VeniceMeasurementAllowlist::Source::text() const
{
    return std::visit(SourceText{}, m_case);
}

const std::vector<Stack> &VeniceMeasurementAllowlist::stacks(const QString &model) const
{
    static const std::vector<Stack> none;
    const auto found = stacksByModel.find(model);
    return found == stacksByModel.end() ? none : found->second;
}

bool VeniceMeasurementAllowlist::hasImage(const TDXQuote::TDReport &report, const QString &model) const
{
    const Image image(report);
    return std::ranges::any_of(stacks(model), [&](const Stack &stack) { return image.isOf(stack); });
}

Match VeniceMeasurementAllowlist::match(const TDXQuote::TDReport &report,
                                        const std::optional<QString> &configurationText,
                                        const std::optional<QByteArray> &instanceID,
                                        const QString &model) const
{
    const Image image(report);
    std::vector<const Stack *> candidates;
    for (const Stack &stack : stacks(model)) {
        if (image.isOf(stack))
            candidates.push_back(&stack);
    }
    if (candidates.empty())
        throw Refusal(Refusal::Case::imageNotListed);
    const auto live = requireBoundConfiguration(report, configurationText, instanceID);

    // The furthest that any candidate got tells more than the last one tried.
    auto furthest = Refusal::Case::configurationNotReviewed;
    for (const Stack *stack : candidates) {
        for (const VeniceReviewedConfiguration &configuration : stack->configurations) {
            const auto judgement = judge(live, *stack, configuration);
            if (const auto *hostLabel = std::get_if<QString>(&judgement))
                return {*stack, configuration, *hostLabel};
            furthest = std::max(furthest, std::get<Refusal::Case>(judgement));
        }
    }
    throw Refusal(furthest);
}

VeniceMeasurementAllowlist VeniceMeasurementAllowlist::withdrawing(const std::set<QString> &ids) const
{
    VeniceMeasurementAllowlist rest = *this;
    for (auto &[model, stacks] : rest.stacksByModel) {
        for (Stack &stack : stacks) {
            std::erase_if(stack.configurations,
                          [&ids](const auto &configuration) { return ids.contains(configuration.id); });
        }
        std::erase_if(stacks, [](const Stack &stack) { return stack.configurations.empty(); });
    }
    std::erase_if(rest.stacksByModel, [](const auto &entry) { return entry.second.empty(); });
    return rest;
}

} // namespace morvane
