#pragma once

#include "support/ServerProcess.h"

namespace morvane {

// The real model server.
class ModelServer : public ServerProcess {
public:
    // A model that the server says it has.
    struct Listed {
        QString name;
        QStringList capabilities; // as Ollama names them
        QString remoteHost = {};  // where it runs when that is a service on the internet
        QString scenario = QStringLiteral("practice-fast");
    };
    enum class Interface { chatCompletions, ollama }; // the second comes on top of the first

    // The program's file.
    [[nodiscard]] static QString program();

    // Throws when the server doesn't come up.
    explicit ModelServer(const QStringList &options = {});

    // Lists just these models; without any, one for each scenario.
    explicit ModelServer(Interface interface, const std::vector<Listed> &models = {});
};

} // namespace morvane
