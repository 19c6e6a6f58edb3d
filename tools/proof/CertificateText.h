#pragma once

#include <QByteArray>
#include <QString>

namespace morvane {

// One line about a certificate for a reader: whose it is, and from when to when it is valid. Nothing in it is
// checked.
namespace CertificateText {

[[nodiscard]] QString of(const QByteArray &der);

} // namespace CertificateText

} // namespace morvane
