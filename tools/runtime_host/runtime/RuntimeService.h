#pragma once

#include "ModelPull.h"

#include "loopback/AnswerScript.h"
#include "loopback/HoldPoint.h"
#include "loopback/Server.h"
#include "model_server/ModelService.h"

#include <set>

namespace morvane {

// The documented interface of a runtime that keeps its models in a folder. Chats are answered as the practice
// model server answers them.
class RuntimeService final : public Service {
public:
    struct Places {
        QString models;      // folder
        QString identityKey; // file
    };

    RuntimeService(Places places, PracticeFolder folder);
    ~RuntimeService() override; // ends the process beside it

    Work answer(Exchange &exchange) override;

private:
    Work pull(Exchange &exchange);
    Work remove(Exchange &exchange);
    Work processes(Exchange &exchange);
    Work load(Exchange &exchange);
    Work goOn(Exchange &exchange);
    Work greet(Exchange &exchange);
    Work tags(Exchange &exchange);
    Work chat(Exchange &exchange);

    // What the list says is what the folder holds.
    void readModels();
    void startRunner();

    Places m_places;
    PracticeFolder m_folder;
    ModelStore m_store;
    HoldPoint m_holdPoint;
    AnswerScript m_script;
    ModelService m_models;
    std::set<QString> m_loaded;
    int m_tagRequests = 0;
    int m_runner = 0; // process; 0 for none
};

} // namespace morvane
