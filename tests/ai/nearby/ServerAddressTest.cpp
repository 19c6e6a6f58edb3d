#include "ai/nearby/ServerAddress.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

TEST(ServerAddressTest, MakesBaseAddressesOfWhatPeopleType)
{
    const std::vector<std::pair<QString, QString>> rows{
        {u" box: "_s, u"http://box.local:8080/v1 http://box.local:8000/v1"_s},
        {u"Box.local."_s, u"http://Box.local.:8080/v1 http://Box.local.:8000/v1"_s},
        {u"box:1234"_s, u"http://box.local:1234/v1"_s},
        {u"192.168.1.5/api/"_s, u"http://192.168.1.5:8080/api http://192.168.1.5:8000/api"_s},
        {u"HTTP://192.168.1.5:80"_s, u"http://192.168.1.5:80/v1"_s},
        {u"fd00::1"_s, u"http://[fd00::1]:8080/v1 http://[fd00::1]:8000/v1"_s},
        {u"[fd00::1]:99"_s, u"http://[fd00::1]:99/v1"_s},
        {u"localhost"_s, u"http://localhost:8080/v1 http://localhost:8000/v1"_s},
        {u"https://models.example.com"_s, u"https://models.example.com/v1"_s},
        // Outside only with https, and nothing that isn't a place alone.
        {u"models.example.com"_s, {}},
        {u"8.8.8.8"_s, {}},
        {u"0x7f.0.0.1"_s, {}},
        {u"2001:db8::1"_s, {}},
        {u"ftp://box"_s, {}},
        {u"user:word@box"_s, {}},
        {u"https://user@models.example.com"_s, {}},
        {u"box?x=1"_s, {}},
        {u"box:0"_s, {}},
        {u"box:99999"_s, {}},
        {u"Anna’s box"_s, {}},
        {u"küche"_s, {}},
        {u" \n"_s, {}},
        {u"http://"_s, {}},
        {u"://"_s, {}},
        {QString(600, u'b'), {}},
    };
    for (const auto &[text, addresses] : rows)
        EXPECT_EQ(ServerAddress::candidates(text, {8080, 8000}).join(u' '), addresses)
            << text.left(40).toStdString();
}

} // namespace

} // namespace morvane
