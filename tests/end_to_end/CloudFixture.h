#pragma once

#include "ai/routing/AIRequestRouter.h"
#include "end_to_end/AppFixture.h"
#include "persistence/SettingsStore.h"
#include "support/ManualClock.h"
#include "support/PrivateCloudServer.h"
#include "support/TextForms.h"

namespace morvane {

using namespace Qt::StringLiterals;

// What the application below is told of when it starts.
struct CloudBehind {
    explicit CloudBehind(const QStringList &options)
        : cloud(options)
    {}

    PrivateCloudServer cloud;
    ManualClock time;
};

// The whole application with the values of the development deployment: its private cloud is the real server
// of tools/private_cloud on the other side of a socket, and the model server is what the settings name.
class CloudFixture : protected CloudBehind, public AppFixture {
protected:
    // The options are those of the private cloud's server.
    explicit CloudFixture(const QStringList &options = {})
        : CloudBehind(options)
        , AppFixture(time, {DevRelay::Loopback::ipv4, cloud.port()})
    {}

    [[nodiscard]] QString lastStatus() const { return chat().messages()->messages().back()->statusRaw(); }

    // The private cloud's model from now on, tried again where it was refused.
    void useCloudModel(const QString &model)
    {
        state->storage().settings->setHostedRelayModel(model);
        state->assistant().router->tryPrivateCloudAgain();
    }

    // What has arrived at the private cloud's server after so many requests, a letter each: L and S for the
    // list and its signature, P for a proof, C for a turn.
    [[nodiscard]] QString requestsAfter(std::size_t count)
    {
        static const std::map<QByteArray, QString> letters{{"/v1/measurements", u"L"_s},
                                                           {"/v1/measurements.sig", u"S"_s},
                                                           {"/v1/attestation", u"P"_s},
                                                           {"/v1/chat/completions", u"C"_s},
                                                           {"/go-on", {}}};
        QString all;
        for (std::size_t i = count; i < cloud.requests().size(); ++i) {
            const auto letter = letters.find(cloud.requests()[i].target.split('?').first());
            all += letter == letters.end() ? u"?"_s : letter->second;
        }
        return all;
    }

public:
    // No form in which words might lie in those bytes, but for encryption.
    static void expectAbsent(const QString &words, const QByteArray &bytes)
    {
        const QByteArray lower = bytes.toLower(); // for the forms in digits
        for (const QByteArray &form : formsOf(words))
            EXPECT_FALSE(bytes.contains(form) || lower.contains(form)) << words.toStdString();
    }
};

} // namespace morvane
