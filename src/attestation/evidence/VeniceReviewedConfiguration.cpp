#include "attestation/evidence/VeniceReviewedConfiguration.h"

#include "attestation/evidence/Digest.h"

#include <algorithm>

namespace morvane {

namespace {

bool isLowerCaseLetterOrDigit(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

} // namespace

std::optional<QByteArray> VeniceReviewedConfiguration::hostLabelBytes(QByteArrayView text) const
{
    const bool leavesRoom = prefixLength >= 0 && suffixLength >= 0 && prefixLength < text.size() &&
                            suffixLength < text.size() - prefixLength;
    if (!leavesRoom || Digest::sha256Hex(text.first(prefixLength)) != prefixSHA256.toLower() ||
        Digest::sha256Hex(text.last(suffixLength)) != suffixSHA256.toLower())
        return std::nullopt;
    return text.sliced(prefixLength).chopped(suffixLength).toByteArray();
}

bool VeniceReviewedConfiguration::isAllowedHostLabel(QByteArrayView label)
{
    return label.size() >= 1 && label.size() <= 32 && isLowerCaseLetterOrDigit(label.front()) &&
           std::all_of(label.begin(), label.end(),
                       [](char c) { return c == '-' || isLowerCaseLetterOrDigit(c); });
}

QByteArray VeniceReviewedConfiguration::expectedMrconfigid(QByteArrayView text)
{
    return QByteArray("\x01") + Digest::sha256({text}) + QByteArray(15, '\0');
}

} // namespace morvane
