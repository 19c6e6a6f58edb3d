#include "network/HttpFixture.h"
#include "network/SocketSpy.h"
#include "network/TestAuthority.h"

namespace morvane {

using namespace Qt::StringLiterals;
using Code = TransportError::Code;

namespace {

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
        ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "answer")),
                              ScriptedServer::Family::IPv4, signer.serving(certificate, newestVersion));
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

TEST_F(HttpsTest, WithoutAuthoritiesOfItsOwnTheSystemsCount)
{
    session = sessionTrusting({});
    const ScriptedServer server(ScriptedServer::answering(ScriptedServer::response("200 OK", "answer")),
                                ScriptedServer::Family::IPv4, known.serving({"IP:127.0.0.1"}));
    EXPECT_EQ(fetch(get(server.url())).error, Code::InsecureConnection);
}

TEST_F(HttpsTest, PlainHttpOnASecurePortIsInsecure)
{
    ScriptedServer server([](ScriptedServer::Connection &connection) {
        connection.send(ScriptedServer::response("200 OK", "plain"));
        connection.awaitClose();
    });
    QUrl url = server.url();
    url.setScheme(u"https"_s);
    EXPECT_EQ(fetch(get(url)).error, Code::InsecureConnection);
}

} // namespace

} // namespace morvane
