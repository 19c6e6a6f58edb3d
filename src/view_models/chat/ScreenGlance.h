#pragma once

#include "async/TaskHandle.h"
#include "documents/ImportedAttachment.h"

#include <QObject>
#include <QPointer>

namespace morvane {

class BannerDesk;
class CompanionViewModel;
class ScreenGlancing;
class SettingsStore;

// Takes the text on the screen into the chat, when the person asks for it. GUI thread.
class ScreenGlance : public QObject {
    Q_OBJECT
public:
    enum class Then { ask, summarize };

    // What is given outlives this object.
    struct Services {
        SettingsStore &settings;
        BannerDesk &banner;
        CompanionViewModel &companion;
        ScreenGlancing *screen = nullptr; // absent: nothing happens
    };

    explicit ScreenGlance(Services services, QObject *parent = nullptr);

    [[nodiscard]] bool isOffered() const { return m_services.screen != nullptr; }
    [[nodiscard]] bool isGlancing() const { return m_task.isRunning(); }

    // Nothing while it looks already.
    void glance(Then then);
    // What it finds is no longer wanted.
    void cancel();

Q_SIGNALS:
    void found(const morvane::ImportedAttachment &attachment, morvane::ScreenGlance::Then then);

private:
    static QCoro::Task<> look(QPointer<ScreenGlance> self, Then then, std::stop_token stop);
    void take(const QString &text, Then then);
    void fail(const std::exception_ptr &error, Then then);

    Services m_services;
    TaskHandle m_task;
};

} // namespace morvane
