#pragma once

#include "end_to_end/AppFixture.h"
#include "support/ManualClock.h"
#include "support/PrivateCloudServer.h"

namespace morvane {

class ChatViewModel;

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
    explicit CloudFixture(const QStringList &options = {});

    [[nodiscard]] ChatViewModel &chat() const;
    [[nodiscard]] QString lastStatus() const;

    // The private cloud's model from now on, tried again where it was refused.
    void useCloudModel(const QString &model);

    // What has arrived at the private cloud's server after so many requests, a letter each: L and S for the
    // list and its signature, P for a proof, C for a turn.
    [[nodiscard]] QString requestsAfter(std::size_t count);

public:
    // No form in which words might lie in those bytes, but for encryption.
    static void expectAbsent(const QString &words, const QByteArray &bytes);
};

} // namespace morvane
