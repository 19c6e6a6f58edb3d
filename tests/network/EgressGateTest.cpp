#include "network/EgressGate.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Passage {
    QString address;
    std::optional<QString> anywhere;    // reason of a gate without limits
    std::optional<QString> privateOnly; // reason of a private-only gate
};

std::optional<QString> elsewhere(const QString &host)
{
    return host + u" is not on this Mac or your network, and this request carries your own data"_s;
}

TEST(EgressGateTest, RefusesInOrder)
{
    const auto noAddress = std::optional(u"a request with no address"_s);
    const auto noHost = std::optional(u"a request with no host"_s);
    const auto ftp = std::optional(u"ftp is not a web address"_s);
    const auto unnamed = std::optional(u"that is not a web address"_s);
    const std::vector<Passage> table{
        {u""_s, noAddress, noAddress},
        {u"http://[zz]/"_s, noAddress, noAddress},
        {u"ftp://host"_s, ftp, ftp},
        {u"FTP://127.0.0.1"_s, ftp, ftp},
        {u"file:///etc/passwd"_s, u"file is not a web address"_s, u"file is not a web address"_s},
        {u"//example.com/path"_s, unnamed, unnamed},
        {u"https:path"_s, noHost, noHost},
        {u"http:///path"_s, noHost, noHost},
        {u"http://example.com/"_s, {}, elsewhere(u"example.com"_s)},
        {u"HTTPS://EXAMPLE.com/"_s, {}, elsewhere(u"example.com"_s)},
        {u"https://user@example.com:8443/"_s, {}, elsewhere(u"example.com"_s)},
        {u"https://127.0.0.1@example.com/"_s, {}, elsewhere(u"example.com"_s)},
        {u"https://bücher.example/"_s, {}, elsewhere(u"xn--bcher-kva.example"_s)},
        {u"https://service.morvane.invalid/"_s, {}, elsewhere(u"service.morvane.invalid"_s)},
        {u"http://[2001:db8::1]/"_s, {}, elsewhere(u"2001:db8::1"_s)},
        {u"http://127.0.0.1:11434"_s, {}, {}},
        {u"http://localhost/"_s, {}, {}},
        {u"http://[fd00::1]/"_s, {}, {}},
        {u"http://[fe80::1%25eth0]/"_s, {}, {}},
        {u"https://printer.local/"_s, {}, {}},
    };
    for (const Passage &passage : table) {
        SCOPED_TRACE(passage.address.toStdString());
        const QUrl url(passage.address);
        EXPECT_EQ(EgressGate::refusalReason(url, EgressGate::Reach::Anywhere), passage.anywhere);
        EXPECT_EQ(EgressGate::refusalReason(url, EgressGate::Reach::PrivateOnly), passage.privateOnly);
    }
}

} // namespace

} // namespace morvane
