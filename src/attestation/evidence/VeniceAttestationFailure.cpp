#include "attestation/evidence/CaseText.h"
#include "attestation/evidence/VeniceAttestationVerifier.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using VeniceAttestationVerifier::Failure;
using Plain = VeniceAttestationVerifier::Failure::Plain;

// The turn has fallen back to the local model by the time a person reads one of these.
struct Sentences {
    QString app{Product::name};
    QString ending = Failure::localReplyEnding();

    QString hardware = app + u" could not verify the private cloud's hardware proof"_s + ending;
    QString setup = u"The private cloud's server is not set up in a way "_s + app + u" accepts"_s + ending;
    QString model =
        u"The private cloud answered for a different model than "_s + app + u" asked for"_s + ending;
    QString graphics = app + u" could not confirm the private cloud's graphics hardware"_s + ending;
    QString key =
        app + u" could not confirm the private cloud's encryption key belongs to the verified hardware"_s +
        ending;
    QString live = app + u" could not confirm the private cloud was answering live"_s + ending;
};

struct UserMessage {
    Sentences sentences;

    QString operator()(const Failure::Quote &) const { return sentences.hardware; }
    QString operator()(const Failure::QuoteMalformed &) const { return sentences.hardware; }
    QString operator()(const Failure::MeasurementsNotAllowed &) const { return sentences.setup; }
    QString operator()(const Failure::Configuration &) const { return sentences.setup; }
    QString operator()(const Failure::WrongModel &) const { return sentences.model; }
    QString operator()(const Failure::GPUEvidence &) const { return sentences.graphics; }
    QString operator()(Plain plain) const
    {
        switch (plain) {
        case Plain::noQuote:
            return sentences.hardware;
        case Plain::noSigningKey:
        case Plain::reportDataDoesNotBindKey:
        case Plain::statedAddressDoesNotMatchKey:
            return sentences.key;
        case Plain::nonceMismatch:
        case Plain::reportDataDoesNotBindNonce:
            return sentences.live;
        case Plain::gpuEvidenceMissing:
            return sentences.graphics;
        }
        return {};
    }
};

struct CaseTextOf {
    QString operator()(const Failure::Quote &e) const
    {
        return CaseText::of("quote"_L1, {e.failure.caseText()});
    }
    QString operator()(const Failure::QuoteMalformed &e) const
    {
        return CaseText::of("quoteMalformed"_L1, {e.error.caseText()});
    }
    QString operator()(const Failure::MeasurementsNotAllowed &e) const
    {
        return CaseText::of("measurementsNotAllowed"_L1, {CaseText::quoted(e.model)});
    }
    QString operator()(const Failure::Configuration &e) const
    {
        return CaseText::of("configuration"_L1, {e.refusal.caseText()});
    }
    QString operator()(const Failure::WrongModel &e) const
    {
        return CaseText::of("wrongModel"_L1, {CaseText::quoted(e.asked), CaseText::quoted(e.answered)});
    }
    QString operator()(const Failure::GPUEvidence &e) const
    {
        return CaseText::of("gpuEvidence"_L1, {e.failure.caseText()});
    }
    QString operator()(Plain plain) const
    {
        switch (plain) {
        case Plain::noQuote:
            return u"noQuote"_s;
        case Plain::noSigningKey:
            return u"noSigningKey"_s;
        case Plain::nonceMismatch:
            return u"nonceMismatch"_s;
        case Plain::reportDataDoesNotBindNonce:
            return u"reportDataDoesNotBindNonce"_s;
        case Plain::reportDataDoesNotBindKey:
            return u"reportDataDoesNotBindKey"_s;
        case Plain::statedAddressDoesNotMatchKey:
            return u"statedAddressDoesNotMatchKey"_s;
        case Plain::gpuEvidenceMissing:
            return u"gpuEvidenceMissing"_s;
        }
        return {};
    }
};

} // namespace

QString VeniceAttestationVerifier::Failure::localReplyEnding()
{
    return u", so this reply is from the model on your %1."_s.arg(DesktopWords::here().device);
}

QString VeniceAttestationVerifier::Failure::caseText() const
{
    return std::visit(CaseTextOf{}, m_case);
}

QString VeniceAttestationVerifier::Failure::userMessage() const
{
    return std::visit(UserMessage{}, m_case);
}

} // namespace morvane
