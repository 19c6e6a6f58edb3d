#include "view_models/chat/ImageWarning.h"

#include "ai/routing/AIRequestRouter.h"
#include "async/CancelledError.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"
#include "view_models/chat/BannerDesk.h"

#include <QPointer>

namespace morvane {

using namespace Qt::StringLiterals;

ImageWarning::ImageWarning(AIRequestRouter &router, BannerDesk &banner, QObject *parent)
    : QObject(parent)
    , m_router(router)
    , m_banner(banner)
{}

void ImageWarning::judge()
{
    withdraw();
    const ChatSource source = m_router.chatSource();
    switch (source.kind) {
    case ChatSource::Kind::morvaneCloud:
    case ChatSource::Kind::customCloud:
    case ChatSource::Kind::ollamaCloud:
        return tell(staysNear());
    case ChatSource::Kind::thisMac:
    case ChatSource::Kind::network:
        m_asking = TaskHandle::start([self = QPointer(this), model = source.model](std::stop_token stop) {
            return ask(self, model, std::move(stop));
        });
        return;
    case ChatSource::Kind::notConfigured:
        return; // there is nobody to send it to
    }
}

void ImageWarning::withdraw()
{
    m_asking.requestStop();
    if (const auto told = std::exchange(m_told, std::nullopt))
        m_banner.dismiss(*told);
}

QCoro::Task<> ImageWarning::ask(QPointer<ImageWarning> self, QString model, std::stop_token stop)
{
    try {
        const std::optional<bool> sees = co_await self->m_router.seesImages(stop);
        throwIfStopped(stop);
        if (!self || sees.value_or(true))
            co_return;
        const std::vector<ContextBuilder::HistoryItem> picture{
            {MessageRole::user, {}, {QStringLiteral("data:image/jpeg;base64,")}}};
        const std::optional<QString> other = co_await self->m_router.visionModel(picture, stop);
        throwIfStopped(stop);
        if (self && !other)
            self->tell(cannotSee(model));
    } catch (const std::exception &) { // what can't be found out now is said when it is sent
    }
}

void ImageWarning::tell(ErrorBanner banner)
{
    m_banner.tell(std::move(banner));
    m_told = m_banner.banner();
}

ErrorBanner ImageWarning::staysNear()
{
    return {.message =
                u"Images go only to a model on this %1 or your network."_s.arg(DesktopWords::here().device),
            .suggestion = u"This image will be sent to one that can see images, or %1 will say so when you "
                          "send. It does not go to the cloud, and once a picture has been in a chat the rest "
                          "of that chat stays here too."_s.arg(Product::name)};
}

ErrorBanner ImageWarning::cannotSee(const QString &model)
{
    const DesktopWords &desktop = DesktopWords::here();
    return {.message = model + u" can't see images."_s,
            .suggestion =
                u"Switch to a model that can see images in Settings → AI (on capable %1, On this "
                "%2 offers one to download), or remove the image."_s.arg(desktop.devices, desktop.device)};
}

} // namespace morvane
