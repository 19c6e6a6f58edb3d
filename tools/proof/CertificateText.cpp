#include "CertificateText.h"

#include "attestation/evidence/CaseText.h"
#include "utils/bytes/Hex.h"
#include "utils/text/UniversalTime.h"

#include <openssl/asn1.h>
#include <openssl/err.h>
#include <openssl/x509.h>

#include <QDateTime>

#include <algorithm>
#include <memory>
#include <vector>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

Certificate parse(const QByteArray &der)
{
    const auto *cursor = reinterpret_cast<const unsigned char *>(der.data());
    Certificate certificate(d2i_X509(nullptr, &cursor, static_cast<long>(der.size())), X509_free);
    ERR_clear_error();
    return certificate;
}

QString commonNameOf(const X509 *certificate)
{
    const X509_NAME *const subject = X509_get_subject_name(certificate);
    const int index = X509_NAME_get_index_by_NID(subject, NID_commonName, -1);
    if (index < 0)
        return {};
    unsigned char *utf8 = nullptr;
    const int length =
        ASN1_STRING_to_UTF8(&utf8, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, index)));
    QString name = QString::fromUtf8(reinterpret_cast<const char *>(utf8), std::max(length, 0));
    CRYPTO_free(utf8, nullptr, 0); // OPENSSL_free() would write the place of this file into the program
    return name;
}

QString dateText(const ASN1_TIME *time)
{
    std::tm parts{};
    if (ASN1_TIME_to_tm(time, &parts) != 1)
        return u"(unreadable date)"_s;
    return UniversalTime::at(QDate(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday),
                             QTime(parts.tm_hour, parts.tm_min, parts.tm_sec))
        .toString(Qt::ISODate);
}

// The elements of a DER sequence, each with its own tag; none for anything else.
std::vector<QByteArray> elements(const QByteArray &der)
{
    const auto *cursor = reinterpret_cast<const unsigned char *>(der.data());
    const std::unique_ptr<ASN1_SEQUENCE_ANY, void (*)(ASN1_SEQUENCE_ANY *)> sequence(
        d2i_ASN1_SEQUENCE_ANY(nullptr, &cursor, static_cast<long>(der.size())),
        [](ASN1_SEQUENCE_ANY *s) { sk_ASN1_TYPE_pop_free(s, ASN1_TYPE_free); });
    ERR_clear_error();
    std::vector<QByteArray> found;
    for (int i = 0; i < sk_ASN1_TYPE_num(sequence.get()); ++i) {
        const ASN1_TYPE *const element = sk_ASN1_TYPE_value(sequence.get(), i);
        QByteArray encoded(std::max(i2d_ASN1_TYPE(element, nullptr), 0), '\0');
        auto *out = reinterpret_cast<unsigned char *>(encoded.data());
        i2d_ASN1_TYPE(element, &out);
        found.push_back(encoded);
    }
    return found;
}

// The value of Intel's SGX extension, a sequence of pairs of an object identifier and its value.
QByteArray sgxExtension(const X509 *certificate)
{
    const std::unique_ptr<ASN1_OBJECT, decltype(&ASN1_OBJECT_free)> id(
        OBJ_txt2obj("1.2.840.113741.1.13.1", 1), ASN1_OBJECT_free);
    const int index = X509_get_ext_by_OBJ(certificate, id.get(), -1);
    if (index < 0)
        return {};
    const ASN1_OCTET_STRING *const value = X509_EXTENSION_get_data(X509_get_ext(certificate, index));
    return {reinterpret_cast<const char *>(ASN1_STRING_get0_data(value)), ASN1_STRING_length(value)};
}

} // namespace

QString CertificateText::commonName(const QByteArray &der)
{
    const Certificate certificate = parse(der);
    return certificate ? commonNameOf(certificate.get()) : QString();
}

QString CertificateText::fmspc(const QByteArray &der)
{
    // Tag and length come first: an identifier of 10 bytes (1.2.840.113741.1.13.1.4), 6 bytes of value.
    static const QByteArray id = QByteArray::fromHex("060a2a864886f84d010d0104");
    static const QByteArray valueHead = QByteArray::fromHex("0406");
    const Certificate certificate = parse(der);
    for (const QByteArray &pair : elements(certificate ? sgxExtension(certificate.get()) : QByteArray())) {
        const auto parts = elements(pair);
        if (parts.size() == 2 && parts[0] == id && parts[1].startsWith(valueHead))
            return Hex::encode(QByteArrayView(parts[1]).sliced(valueHead.size()));
    }
    return u"(none in the certificate)"_s;
}

QString CertificateText::of(const QByteArray &der)
{
    const Certificate certificate = parse(der);
    if (!certificate)
        return u"(unreadable, %1 bytes)"_s.arg(der.size());
    const QString name = commonNameOf(certificate.get());
    return u"%1, %2 to %3"_s.arg(name.isEmpty() ? u"(no common name)"_s : CaseText::quoted(name),
                                 dateText(X509_get0_notBefore(certificate.get())),
                                 dateText(X509_get0_notAfter(certificate.get())));
}

} // namespace morvane
