#pragma once

#include <QByteArray>
#include <QString>

namespace morvane {

// What a certificate in DER says, for a reader. Nothing in it is checked.
namespace CertificateText {

// One line: whose it is, and from when to when it is valid.
[[nodiscard]] QString of(const QByteArray &der);

// As it stands in the certificate, so not fit to print. Empty when there is none.
[[nodiscard]] QString commonName(const QByteArray &der);

// The processor family that Intel issued a PCK certificate for, 6 bytes as hexadecimal; else words that say
// it isn't there.
[[nodiscard]] QString fmspc(const QByteArray &der);

} // namespace CertificateText

} // namespace morvane
