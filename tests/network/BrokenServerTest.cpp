#include "HttpFixture.h"
#include "SocketSpy.h"

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Code = TransportError::Code;

namespace {

struct Breakage {
    const char *name;
    QByteArray bytes; // all that the server sends before it closes
    Code code;
    int status = 0; // when a head arrived before the break
};

void PrintTo(const Breakage &breakage, std::ostream *out)
{
    *out << breakage.name;
}

QByteArray manyHeaders()
{
    QByteArray bytes("HTTP/1.1 200 OK\r\n");
    while (bytes.size() < 300 * 1024)
        bytes += "X-Filler: " + QByteArray(1000, 'x') + "\r\n";
    return bytes + "\r\n";
}

QByteArray manyInterims()
{
    QByteArray bytes;
    while (bytes.size() < 300 * 1024)
        bytes += "HTTP/1.1 102 Processing\r\n\r\n";
    return bytes;
}

class BrokenServerTest : public HttpTest, public testing::WithParamInterface<Breakage> {};

TEST_P(BrokenServerTest, EndsInATypedErrorAndARow)
{
    const Breakage &breakage = GetParam();
    ScriptedServer server([&](ScriptedServer::Connection &connection) {
        connection.readRequest();
        connection.send(breakage.bytes);
    });
    const Ending ending = fetch(get(server.url()));
    EXPECT_EQ(ending.error, breakage.code);
    EXPECT_EQ(ending.status, breakage.status);
    ASSERT_EQ(rows().size(), 1U);
    EXPECT_TRUE(std::holds_alternative<EgressOutcome::Failed>(rows()[0].outcome.value));
    EXPECT_FALSE(rows()[0].outcome.text().contains(u"marker"_s)); // nothing of what was sent
}

INSTANTIATE_TEST_SUITE_P(
    Breakages, BrokenServerTest,
    testing::Values(
        Breakage{"nothing", "", Code::ConnectionLost},
        Breakage{"garbage", "marker \x01\x02\xff not http at all\r\n\r\n", Code::ConnectionLost},
        Breakage{"badStatus", "HTTP/1.1 abc marker\r\n\r\n", Code::ConnectionLost},
        Breakage{"halfAHead", "HTTP/1.1 200 OK\r\nContent-Le", Code::ConnectionLost},
        Breakage{"cutBody", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n12345", Code::ConnectionLost, 200},
        Breakage{"cutChunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nabc",
                 Code::ConnectionLost, 200},
        Breakage{"badChunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nmarker\r\n",
                 Code::ConnectionLost, 200},
        Breakage{"manyHeaders", manyHeaders(), Code::ResponseTooLarge},
        Breakage{"oneHugeHeader", "HTTP/1.1 200 OK\r\nX: " + QByteArray(1'000'000, 'x') + "\r\n\r\n",
                 Code::ResponseTooLarge},
        Breakage{"endlessInterims", manyInterims(), Code::ResponseTooLarge}),
    [](const auto &test) { return test.param.name; });

class UnreachableTest : public HttpTest {};

TEST_F(UnreachableTest, NoListenerAndNoName)
{
    QUrl closed;
    {
        const ScriptedServer server(ScriptedServer::answering(""));
        closed = server.url();
    }
    EXPECT_EQ(fetch(get(closed)).error, Code::CannotConnect);
    EXPECT_EQ(fetch(get(QUrl(u"http://unknown.test/"_s))).error, Code::CannotConnect);
    EXPECT_EQ(textOf(rows()[1]), "unknown.test 0/0 Failed: Could not connect to the server.");
}

TEST_F(UnreachableTest, PlainHttpOnASecurePortIsInsecure)
{
    ScriptedServer server([](ScriptedServer::Connection &connection) {
        connection.send(ScriptedServer::response("200 OK", "plain"));
        connection.awaitClose();
    });
    QUrl url = server.url();
    url.setScheme(u"https"_s);
    EXPECT_EQ(fetch(get(url)).error, Code::InsecureConnection);
}

// A TLS server whose certificate nobody vouches for. Answers whether the client refused it by an alert.
class SelfSigned {
public:
    SelfSigned()
        : m_key(EVP_EC_gen("P-256"), EVP_PKEY_free)
        , m_certificate(X509_new(), X509_free)
        , m_context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free)
    {
        X509 *certificate = m_certificate.get();
        X509_gmtime_adj(X509_getm_notBefore(certificate), -3600);
        X509_gmtime_adj(X509_getm_notAfter(certificate), 3600);
        X509_set_pubkey(certificate, m_key.get());
        X509_NAME *name = X509_get_subject_name(certificate);
        X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                                   reinterpret_cast<const unsigned char *>("localhost"), -1, -1, 0);
        X509_set_issuer_name(certificate, name);
        X509_sign(certificate, m_key.get(), EVP_sha256());
        SSL_CTX_use_certificate(m_context.get(), certificate);
        SSL_CTX_use_PrivateKey(m_context.get(), m_key.get());
    }

    bool isRefusedBy(int descriptor)
    {
        const std::unique_ptr<SSL, decltype(&SSL_free)> tls(SSL_new(m_context.get()), SSL_free);
        SSL_set_fd(tls.get(), descriptor);
        char byte = 0;
        // TLS 1.3 tells the server only at its first read.
        if (SSL_accept(tls.get()) == 1)
            SSL_read(tls.get(), &byte, 1);
        return ERR_GET_REASON(ERR_peek_last_error()) == SSL_R_TLSV1_ALERT_UNKNOWN_CA;
    }

private:
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> m_key;
    std::unique_ptr<X509, decltype(&X509_free)> m_certificate;
    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> m_context;
};

TEST_F(UnreachableTest, AnUnknownCertificateIsRefusedBeforeAnythingIsSent)
{
    SelfSigned authority;
    std::atomic<bool> isRefused = false;
    QSemaphore judged;
    ScriptedServer server([&](ScriptedServer::Connection &connection) {
        isRefused = authority.isRefusedBy(connection.descriptor());
        judged.release();
    });
    QUrl url = server.url();
    url.setScheme(u"https"_s);
    EXPECT_EQ(fetch(post(url, "secret")).error, Code::InsecureConnection);
    ASSERT_TRUE(judged.tryAcquire(1, 30'000));
    EXPECT_TRUE(isRefused);
    EXPECT_EQ(textOf(rows()[0]), "127.0.0.1 0/0 Failed: A secure connection could not be made.");
}

class SilenceTest : public HttpTest {};

TEST_F(SilenceTest, AServerThatNeverAnswersTimesOut)
{
    ScriptedServer server([](ScriptedServer::Connection &connection) {
        connection.readRequest();
        connection.awaitClose();
    });
    HttpRequest request = post(server.url(), "question");
    request.timeout = 20s;
    const auto ending = begin(request);
    TestWait::until([&] { return server.requests().size() == 1; });
    clock.advance(19'999ms);
    EXPECT_FALSE(ending->isDone);
    clock.advance(1ms);
    TestWait::until([&] { return ending->isDone; });
    EXPECT_EQ(ending->error, Code::TimedOut);
    EXPECT_EQ(rows()[0].outcome.text(), u"Failed: Nothing was sent or received for 20 seconds."_s);
    EXPECT_EQ(rows()[0].bytesSent, server.bytesReceived());
    TestWait::until([&] { return server.closedByPeer() == 1; });
}

TEST_F(SilenceTest, ANameThatNeverResolvesTimesOut)
{
    const auto ending = begin(get(QUrl(u"http://slow.test/"_s)));
    TestWait::until([] { return SocketSpy::slowLookupBegan.try_acquire(); });
    clock.advance(60s);
    TestWait::until([&] { return ending->isDone; });
    EXPECT_EQ(ending->error, Code::TimedOut);
    SocketSpy::slowLookupMayEnd.release();
}

TEST_F(SilenceTest, EachByteStartsTheSilenceAnew)
{
    QSemaphore next;
    const QByteArray response = "HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nabc";
    ScriptedServer server([&](ScriptedServer::Connection &connection) {
        connection.readRequest();
        for (const char byte : response) {
            if (!next.tryAcquire(1, 30'000) || !connection.send({&byte, 1}))
                return;
        }
        connection.awaitClose();
    });
    const qint64 before = SocketSpy::received();
    const auto ending = begin(get(server.url()));
    TestWait::until([&] { return server.requests().size() == 1; });
    for (qsizetype i = 0; i < response.size() && !ending->isDone; ++i) {
        clock.advance(40s); // far beyond the timeout in all, never at once
        next.release();
        TestWait::until([&] { return SocketSpy::received() == before + i + 1; });
    }
    TestWait::until([&] { return ending->isDone; });
    EXPECT_EQ(ending->body, "abc");
}

} // namespace

} // namespace morvane
