#include "view_models/chat/ComposerEntries.h"

#include "ai/routing/AIRequestRouter.h"
#include "view_models/chat/QuickAction.h"
#include "view_models/chat/SmallModel.h"

#include <QMetaEnum>

namespace morvane {

using namespace Qt::StringLiterals;

ComposerEntries::ComposerEntries(Services services, QObject *parent)
    : QObject(parent)
    , m_services(std::move(services))
    , m_attachments({m_services.settings, m_services.banner, m_services.documents, m_services.clipboard})
    , m_imageWarning(m_services.router, m_services.banner)
    , m_screen({m_services.settings, m_services.banner, m_services.companion, m_services.screen})
    , m_voice({m_services.banner, m_services.companion, m_services.clock, m_services.capture})
{
    connect(&m_attachments, &AttachmentDesk::attached, this, &ComposerEntries::judgePicture);
    connect(&m_attachments, &AttachmentDesk::changed, this, [this] {
        if (!m_attachments.holdsPicture())
            m_imageWarning.withdraw();
    });
    connect(&m_screen, &ScreenGlance::found, this, &ComposerEntries::takeScreen);
    connect(&m_voice, &VoiceEntry::heard, this, &ComposerEntries::said);
    connect(&m_services.router, &AIRequestRouter::sourceChanged, this, &ComposerEntries::modelNoticeChanged);
}

QStringList ComposerEntries::quickActions()
{
    const auto actions = QMetaEnum::fromType<QuickAction>();
    QStringList labels;
    for (int i = 0; i < actions.keyCount(); ++i)
        labels += QuickActions::labelOf(static_cast<QuickAction>(actions.value(i)));
    return labels;
}

QString ComposerEntries::modelNotice() const
{
    return SmallModel::noticeFor(m_services.router.chatSource());
}

void ComposerEntries::glanceAtScreen(bool autoSummarize)
{
    if (!m_services.isResponding())
        m_screen.glance(autoSummarize ? ScreenGlance::Then::summarize : ScreenGlance::Then::ask);
}

void ComposerEntries::leaveChat()
{
    m_attachments.clear();
    m_screen.cancel();
    m_voice.cancel();
}

void ComposerEntries::judgePicture()
{
    if (m_attachments.holdsPicture())
        m_imageWarning.judge();
}

// Nothing that stood on a screen is sent before the person could see what was read of it.
void ComposerEntries::takeScreen(const ImportedAttachment &attachment, ScreenGlance::Then then)
{
    m_attachments.hold(attachment);
    if (then == ScreenGlance::Then::summarize)
        Q_EMIT suggested(u"Summarize what's on my screen."_s);
}

} // namespace morvane
