#include "CheckRun.h"

#include "attestation/evidence/ExportedProof.h"
#include "attestation/evidence/VeniceAttestationVerifier.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString failureOf(const std::function<void()> &require)
{
    try {
        require();
        return {};
    } catch (const TDXQuote::ParseError &error) {
        return error.caseText();
    } catch (const TDXQuoteVerifier::Failure &failure) {
        return failure.caseText();
    } catch (const NvidiaGPUEvidence::Failure &failure) {
        return failure.caseText();
    } catch (const VeniceAttestationDocument::DecodeError &error) {
        return error.caseText();
    } catch (const VeniceAttestationVerifier::Failure &failure) {
        return failure.caseText();
    } catch (const VeniceMeasurementAllowlist::Refusal &refusal) {
        return refusal.caseText();
    } catch (const ProofExportFile::ReadError &error) {
        return error.caseText();
    } catch (const ExportedProof::Failure &failure) {
        return failure.caseText();
    }
}

} // namespace

CheckRun::CheckRun(Report &report)
    : m_report(report)
{
    m_report.setVerdict(u"ok"_s);
}

void CheckRun::check(const QString &claim, const std::function<void()> &require)
{
    if (!isGood())
        return m_report.addCheck(claim, Report::Result::NotReached);
    const QString failure = failureOf(require);
    m_report.addCheck(claim, failure.isEmpty() ? Report::Result::Ok : Report::Result::Failed);
    if (!failure.isEmpty())
        m_report.setVerdict(failure);
}

} // namespace morvane
