#pragma once

#include "support/ScriptedServer.h"

#include <openssl/ssl.h>

namespace morvane {

// An authority made for one test, and the certificates that it signs.
//
// In a program that links this, no TLS context has a limit on old versions that the machine's own settings
// put on it, so that what is refused is refused by the client.
class TestAuthority {
public:
    struct Certificate {
        const char *names = "DNS:secure.test"; // as in a subjectAltName
        long validFrom = -3600;                // seconds from now
        long validTo = 3600;
    };

    TestAuthority();

    // Its own certificate.
    [[nodiscard]] QByteArray pem() const;

    // A server's end of TLS, with a certificate of this authority.
    [[nodiscard]] ScriptedServer::Wrap serving(const Certificate &certificate,
                                               int newestVersion = TLS1_3_VERSION) const;

private:
    // A certificate for the authority's key, signed with it.
    [[nodiscard]] std::shared_ptr<X509> certified(const Certificate &certificate, bool isAuthority) const;

    std::shared_ptr<EVP_PKEY> m_key; // of the authority and of its servers
    std::shared_ptr<X509> m_own;
};

} // namespace morvane
