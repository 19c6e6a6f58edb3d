#include "CertificateText.h"

#include "attestation/evidence/CaseText.h"

#include <openssl/err.h>
#include <openssl/x509.h>

#include <QDateTime>

#include <memory>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString commonName(const X509 *certificate)
{
    const X509_NAME *const subject = X509_get_subject_name(certificate);
    const int index = X509_NAME_get_index_by_NID(subject, NID_commonName, -1);
    if (index < 0)
        return u"(no common name)"_s;
    unsigned char *utf8 = nullptr;
    const int length =
        ASN1_STRING_to_UTF8(&utf8, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, index)));
    const QString name = QString::fromUtf8(reinterpret_cast<const char *>(utf8), std::max(length, 0));
    OPENSSL_free(utf8);
    return CaseText::quoted(name);
}

QString dateText(const ASN1_TIME *time)
{
    std::tm parts{};
    if (ASN1_TIME_to_tm(time, &parts) != 1)
        return u"(unreadable date)"_s;
    return QDateTime(QDate(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday),
                     QTime(parts.tm_hour, parts.tm_min, parts.tm_sec), Qt::UTC)
        .toString(Qt::ISODate);
}

} // namespace

QString CertificateText::of(const QByteArray &der)
{
    const auto *cursor = reinterpret_cast<const unsigned char *>(der.data());
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(
        d2i_X509(nullptr, &cursor, static_cast<long>(der.size())), X509_free);
    ERR_clear_error();
    if (!certificate)
        return u"(unreadable, %1 bytes)"_s.arg(der.size());
    return u"%1, %2 to %3"_s.arg(commonName(certificate.get()),
                                 dateText(X509_get0_notBefore(certificate.get())),
                                 dateText(X509_get0_notAfter(certificate.get())));
}

} // namespace morvane
