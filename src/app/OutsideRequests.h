#pragma once

#include "view_models/AppRequest.h"

#include <QObject>

#include <deque>
#include <memory>

namespace morvane {

class AppState;
class ChatViewModel;

// What was asked for from outside waits here until there are chats and they are open: while the application
// is locked nothing of it is begun, stored or sent. GUI thread.
class OutsideRequests : public QObject {
    Q_OBJECT
public:
    static constexpr std::size_t most = 32; // that wait; any more are dropped

    using QObject::QObject;

    void take(const AppRequest &request);

    // From now on until leave(), which comes before `state` goes.
    void serve(AppState &state);
    void leave();

private:
    void carryOutAll();
    void carryOut(const AppRequest &request);
    void fill(const AppRequest &request);
    void sendWithFile(ChatViewModel &chat);

    AppState *m_state = nullptr;
    std::unique_ptr<QObject> m_fileWait; // while a file is read that goes with the words
    std::deque<AppRequest> m_waiting;
};

} // namespace morvane
