#include "evidence/CertificateRecipe.h"
#include "network/HttpFixture.h"
#include "network/SocketSpy.h"
#include "support/TestData.h"

#include <dlfcn.h>
#include <openssl/ssl.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Code = TransportError::Code;

// No TLS context of this program has a limit on old versions that the machine's own settings put on it, so
// that what is refused is refused by the client.
extern "C" SSL_CTX *SSL_CTX_new(const SSL_METHOD *method)
{
    static auto *const next = reinterpret_cast<decltype(&SSL_CTX_new)>(dlsym(RTLD_NEXT, "SSL_CTX_new"));
    SSL_CTX *context = next(method);
    SSL_CTX_set_security_level(context, 0);
    SSL_CTX_set_min_proto_version(context, 0);
    return context;
}

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

// An authority made for one test, and the certificates that it signs.
class TestAuthority {
public:
    struct Certificate {
        QByteArray names = "DNS:secure.test"; // as in a subjectAltName
        qint64 validFrom = -3600;             // seconds from now
        qint64 validTo = 3600;
    };

    QByteArray pem() const { return pemText({m_own.mint()}); }

    // A server's end of TLS, with a certificate of this authority.
    ScriptedServer::Wrap serving(const Certificate &certificate, int newestVersion = TLS1_3_VERSION) const
    {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        const QByteArray minted = CertificateRecipe{.name = u"server"_s,
                                                    .key = m_key,
                                                    .issuer = m_own.name,
                                                    .issuerKey = m_key,
                                                    .isCA = false,
                                                    .from = now.addSecs(certificate.validFrom),
                                                    .to = now.addSecs(certificate.validTo),
                                                    .servesAs = certificate.names}
                                      .mint();
        const std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
        SSL_CTX_use_certificate_ASN1(context.get(), static_cast<int>(minted.size()),
                                     reinterpret_cast<const unsigned char *>(minted.data()));
        SSL_CTX_use_PrivateKey(context.get(), m_key.handle());
        SSL_CTX_set_max_proto_version(context.get(), newestVersion);
        return [context](int descriptor) { return std::make_unique<TlsChannel>(context.get(), descriptor); };
    }

private:
    const SigningKey m_key{SigningKey::Curve::P256}; // of the authority and of its servers
    const CertificateRecipe m_own{u"authority"_s, m_key, u"authority"_s, m_key};
};

class HttpsTest : public HttpTest {
protected:
    void SetUp() override
    {
        SocketSpy::setAddresses("secure.test", {{u"127.0.0.1"_s}});
        session = sessionTrusting(known.pem());
    }

    std::shared_ptr<CurlHttpSession> sessionTrusting(const QByteArray &authorities)
    {
        return std::make_shared<CurlHttpSession>(EgressFeature::aiModel, SensitiveDataSet(), ledger, clock,
                                                 AddressRule(), authorities);
    }

    TestAuthority known;
};

// What is refused never sees a byte of the request.
TEST_F(HttpsTest, TrustsOnlyAValidCertificateOfTheHostByAKnownAuthorityAndAModernVersion)
{
    const TestAuthority unknown;
    const struct {
        const char *name;
        const TestAuthority &signer;
        TestAuthority::Certificate certificate;
        QString host;
        int newestVersion;
        bool isTrusted;
    } cases[] = {
        {"good", known, {}, u"secure.test"_s, TLS1_3_VERSION, true},
        {"TLS 1.2", known, {}, u"secure.test"_s, TLS1_2_VERSION, true},
        {"good for its address", known, {"IP:127.0.0.1"}, u"127.0.0.1"_s, TLS1_3_VERSION, true},
        {"TLS 1.1 only", known, {}, u"secure.test"_s, TLS1_1_VERSION, false},
        {"other name", known, {"DNS:other.test"}, u"secure.test"_s, TLS1_3_VERSION, false},
        {"name below", known, {"DNS:a.secure.test"}, u"secure.test"_s, TLS1_3_VERSION, false},
        {"name for an address", known, {}, u"127.0.0.1"_s, TLS1_3_VERSION, false},
        {"expired", known, {"DNS:secure.test", -7200, -3600}, u"secure.test"_s, TLS1_3_VERSION, false},
        {"not yet valid", known, {"DNS:secure.test", 3600, 7200}, u"secure.test"_s, TLS1_3_VERSION, false},
        {"unknown authority", unknown, {}, u"secure.test"_s, TLS1_3_VERSION, false},
    };
    for (const auto &[name, signer, certificate, host, newestVersion, isTrusted] : cases) {
        SCOPED_TRACE(name);
        ScriptedServer server(ok("answer"), ScriptedServer::Family::IPv4,
                              signer.serving(certificate, newestVersion));
        QUrl url = server.url();
        url.setHost(host);
        const Ending ending = fetch(post(url, "secret"));
        EXPECT_EQ(server.requests().size(), isTrusted ? 1U : 0U);
        EXPECT_EQ(rows().back().bytesSent, server.bytesReceived());
        EXPECT_EQ(rows().back().bytesReceived, server.bytesSent());
        if (isTrusted) {
            EXPECT_EQ(ending.body, "answer");
            continue;
        }
        EXPECT_EQ(ending.error, Code::InsecureConnection);
        EXPECT_EQ(textOf(rows().back()),
                  host.toStdString() + " 0/0 Failed: A secure connection could not be made.");
    }
}

// What a reader of the ledger takes from a row holds, encrypted or not: how it ended, and to the byte what
// the server counted. A request that any socket was opened for was not "blocked".
TEST_F(HttpsTest, ARowTellsHowItEndedAndWhatTheServerCounted)
{
    const auto rowOf = [this](const QByteArray &line, bool isSecure) {
        const QByteArrayList words = line.split(' ').mid(0, 2);
        const QByteArray &reader = words[0];
        const QByteArray response = line.sliced(words.join(' ').size() + 1).replace("\n", "\r\n");
        session = sessionTrusting(known.pem()); // has looked up no name yet
        SocketSpy::setAddresses("row.local", {QString::fromLatin1(words[1]).split(u'+')});
        const auto play = [&](ScriptedServer::Connection &connection) {
            connection.readRequest();
            connection.send(response);
            if (reader != "whole")
                connection.awaitClose();
        };
        std::optional<ScriptedServer> server(std::in_place, play, ScriptedServer::Family::IPv4,
                                             isSecure ? known.serving({"DNS:row.local"})
                                                      : ScriptedServer::Wrap());
        HttpRequest request = post(server->url(), "question");
        request.url.setHost(u"row.local"_s);
        request.headers = {{"Accept-Encoding", "gzip"}};
        request.limit = std::chrono::seconds(3);
        if (response == "nobody")
            server.reset();
        if (reader == "some") {
            static_cast<void>(TestWait::await(session->send(request, {})));
        } else {
            const auto ending = begin(request);
            TestWait::until([&] { return ending->isDone || ending->body == "half"; });
            if (reader == "late")
                clock.advance(*request.limit);
            awaitEnd(ending);
        }
        const NetworkLedger::Entry row = rows().back();
        EXPECT_EQ(row.bytesSent, server ? server->bytesReceived() : 0) << line.constData();
        const qint64 sent = server ? server->bytesSent() : 0;
        EXPECT_TRUE(reader == "some" ? row.bytesReceived <= sent : row.bytesReceived == sent);
        return row.outcome.text();
    };
    const auto outcome = [&](const QByteArray &line) {
        const QString plain = rowOf(line, false);
        EXPECT_EQ(rowOf(line, true), plain) << line.constData();
        return plain;
    };
    TestData::expect("network/rows.txt", outcome);
}

TEST_F(HttpsTest, WithoutAuthoritiesOfItsOwnTheSystemsCount)
{
    session = sessionTrusting({});
    const ScriptedServer server(ok("answer"), ScriptedServer::Family::IPv4, known.serving({"IP:127.0.0.1"}));
    EXPECT_EQ(fetch(get(server.url())).error, Code::InsecureConnection);
}

} // namespace

} // namespace morvane
