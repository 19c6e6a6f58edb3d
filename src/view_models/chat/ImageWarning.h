#pragma once

#include "ai/routing/ChatSource.h"
#include "async/TaskHandle.h"
#include "view_models/chat/ErrorBanner.h"

#include <QObject>

#include <optional>

namespace morvane {

class AIRequestRouter;
class BannerDesk;

// Says what becomes of a picture that was attached, before it is sent: that it goes to no service, or that
// the model in use can't see it. GUI thread.
class ImageWarning : public QObject {
    Q_OBJECT
public:
    // Both outlive this object.
    ImageWarning(AIRequestRouter &router, BannerDesk &banner, QObject *parent = nullptr);

    // A picture is pending. A model nearby is asked whether it sees, without waiting for it here.
    void judge();
    // None is any more.
    void withdraw();

    [[nodiscard]] static ErrorBanner staysNear();
    [[nodiscard]] static ErrorBanner cannotSee(const QString &model);

private:
    static QCoro::Task<> ask(QPointer<ImageWarning> self, QString model, std::stop_token stop);
    void tell(ErrorBanner banner);

    AIRequestRouter &m_router;
    BannerDesk &m_banner;
    std::optional<ErrorBanner> m_told;
    TaskHandle m_asking;
};

} // namespace morvane
