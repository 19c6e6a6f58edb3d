#pragma once

#include "view_models/chat/AttachmentDesk.h"
#include "view_models/chat/ImageWarning.h"
#include "view_models/chat/ScreenGlance.h"
#include "view_models/chat/VoiceEntry.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <functional>

namespace morvane {

class AIRequestRouter;
class BannerDesk;
class Clock;
class CompanionViewModel;
class SettingsStore;

// The ways into the composer beside typing: what is attached, what is on the screen, what is said. GUI
// thread.
class ComposerEntries : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(morvane::AttachmentDesk *attachments READ attachments CONSTANT)
    Q_PROPERTY(
        QStringList quickActions READ quickActions CONSTANT) // their labels, in the order of QuickAction
    Q_PROPERTY(bool offersScreen READ offersScreen CONSTANT)
    Q_PROPERTY(morvane::VoiceEntry *voice READ voice CONSTANT)
    // That a small model answers here; empty where it isn't known.
    Q_PROPERTY(QString modelNotice READ modelNotice NOTIFY modelNoticeChanged)

public:
    // All of it outlives this object.
    struct Services {
        SettingsStore &settings;
        AIRequestRouter &router;
        BannerDesk &banner;
        CompanionViewModel &companion;
        Clock &clock;
        DocumentImporting *documents = nullptr;
        ScreenGlancing *screen = nullptr;
        SpeechCapturing *capture = nullptr;
        std::function<const QMimeData *()> clipboard = {};
        std::function<bool()> isResponding;
    };

    explicit ComposerEntries(Services services, QObject *parent = nullptr);

    [[nodiscard]] AttachmentDesk *attachments() { return &m_attachments; }
    [[nodiscard]] const AttachmentDesk *attachments() const { return &m_attachments; }
    [[nodiscard]] static QStringList quickActions();
    [[nodiscard]] bool offersScreen() const { return m_screen.isOffered(); }
    [[nodiscard]] VoiceEntry *voice() { return &m_voice; }
    [[nodiscard]] QString modelNotice() const;

    // Nothing while a turn runs.
    Q_INVOKABLE void glanceAtScreen(bool autoSummarize);

    // The chat is left: what was meant for it goes, what is being said included.
    void leaveChat();

Q_SIGNALS:
    void suggested(const QString &words); // may be sent with what was attached
    void said(const QString &words);
    void modelNoticeChanged();

private:
    void judgePicture();
    void takeScreen(const ImportedAttachment &attachment, ScreenGlance::Then then);

    Services m_services;
    AttachmentDesk m_attachments;
    ImageWarning m_imageWarning;
    ScreenGlance m_screen;
    VoiceEntry m_voice;
};

} // namespace morvane
