#pragma once

#include "evidence/SigningKey.h"
#include "utils/text/UniversalTime.h"

#include <QDateTime>
#include <QString>

#include <vector>

namespace morvane {

// A certificate to be minted. Tests bend one property at a time.
struct CertificateRecipe {
    QString name;
    SigningKey key;
    QString issuer;
    SigningKey issuerKey;
    bool isCA = true;
    QDateTime from = UniversalTime::at(QDate(2025, 1, 1));
    QDateTime to = UniversalTime::at(QDate(2035, 1, 1));
    bool unknownCriticalExtension = false;
    QByteArray sgxExtension; // DER; what Intel says of a processor in a PCK certificate
    QByteArray minted;       // DER of a certificate made earlier; the rest of the recipe then makes none
    QByteArray servesAs;     // a TLS server's subjectAltName, as OpenSSL spells it: "DNS:a.test"

    [[nodiscard]] QByteArray mint() const; // DER, of a new serial number each time unless it is `minted`

    bool operator==(const CertificateRecipe &) const = default;
};

// Leaf first, each issued by the one behind it; the last issues itself.
using ChainRecipe = std::vector<CertificateRecipe>;

[[nodiscard]] ChainRecipe chainRecipe(const QStringList &namesLeafFirst, const SigningKey &leafKey,
                                      SigningKey::Curve curve);
[[nodiscard]] QByteArray pemText(const std::vector<QByteArray> &chain);

} // namespace morvane
