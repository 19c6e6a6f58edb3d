#include "network/TestAuthority.h"

#include <dlfcn.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

namespace morvane {

namespace {

class TlsChannel final : public ScriptedServer::Channel {
public:
    TlsChannel(SSL_CTX *context, int descriptor)
        : m_tls(SSL_new(context), SSL_free)
    {
        SSL_set_fd(m_tls.get(), descriptor);
        SSL_set_accept_state(m_tls.get());
    }
    ssize_t read(char *bytes, std::size_t size) override
    {
        return SSL_read(m_tls.get(), bytes, static_cast<int>(size));
    }
    ssize_t write(const char *bytes, std::size_t size) override
    {
        return SSL_write(m_tls.get(), bytes, static_cast<int>(size));
    }

private:
    std::unique_ptr<SSL, decltype(&SSL_free)> m_tls;
};

void extend(X509 *certificate, int extension, const char *value)
{
    X509_EXTENSION *made = X509V3_EXT_conf_nid(nullptr, nullptr, extension, value);
    X509_add_ext(certificate, made, -1);
    X509_EXTENSION_free(made);
}

} // namespace

extern "C" SSL_CTX *SSL_CTX_new(const SSL_METHOD *method)
{
    static auto *const next = reinterpret_cast<decltype(&SSL_CTX_new)>(dlsym(RTLD_NEXT, "SSL_CTX_new"));
    SSL_CTX *context = next(method);
    SSL_CTX_set_security_level(context, 0);
    SSL_CTX_set_min_proto_version(context, 0);
    return context;
}

TestAuthority::TestAuthority()
    : m_key(EVP_EC_gen("P-256"), EVP_PKEY_free)
    , m_own(certified({}, true))
{}

QByteArray TestAuthority::pem() const
{
    const std::unique_ptr<BIO, decltype(&BIO_free)> text(BIO_new(BIO_s_mem()), BIO_free);
    PEM_write_bio_X509(text.get(), m_own.get());
    char *bytes = nullptr;
    const long size = BIO_get_mem_data(text.get(), &bytes);
    return {bytes, size};
}

ScriptedServer::Wrap TestAuthority::serving(const Certificate &certificate, int newestVersion) const
{
    const std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    SSL_CTX_use_certificate(context.get(), certified(certificate, false).get());
    SSL_CTX_use_PrivateKey(context.get(), m_key.get());
    SSL_CTX_set_max_proto_version(context.get(), newestVersion);
    return [context](int descriptor) { return std::make_unique<TlsChannel>(context.get(), descriptor); };
}

std::shared_ptr<X509> TestAuthority::certified(const Certificate &certificate, bool isAuthority) const
{
    std::shared_ptr<X509> made(X509_new(), X509_free);
    X509_set_version(made.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(made.get()), isAuthority ? 1 : 2);
    X509_gmtime_adj(X509_getm_notBefore(made.get()), certificate.validFrom);
    X509_gmtime_adj(X509_getm_notAfter(made.get()), certificate.validTo);
    X509_set_pubkey(made.get(), m_key.get());
    const auto *name = reinterpret_cast<const unsigned char *>(isAuthority ? "authority" : "server");
    X509_NAME_add_entry_by_txt(X509_get_subject_name(made.get()), "CN", MBSTRING_ASC, name, -1, -1, 0);
    X509_set_issuer_name(made.get(), X509_get_subject_name(isAuthority ? made.get() : m_own.get()));
    if (isAuthority)
        extend(made.get(), NID_basic_constraints, "critical,CA:TRUE");
    else
        extend(made.get(), NID_subject_alt_name, certificate.names);
    X509_sign(made.get(), m_key.get(), EVP_sha256());
    return made;
}

} // namespace morvane
