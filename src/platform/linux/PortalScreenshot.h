#pragma once

#include "async/SharedResult.h"
#include "platform/linux/PortalCall.h"

#include <QDBusConnection>
#include <QObject>
#include <QPointer>

#include <memory>
#include <utility>

namespace morvane {

// One question to the desktop portal for a picture of the screen (org.freedesktop.portal.Screenshot, version
// 1 and later). The portal asks the person as it sees fit, and leaves the picture in a file. GUI thread.
//
// It lives until the portal has answered, also when nobody wants the answer any more: then the file is
// removed all the same.
class PortalScreenshot : public QObject {
    Q_OBJECT
public:
    enum class End { Taken, Refused, Failed, Absent, BusGone };

    // Asks at once.
    explicit PortalScreenshot(const QDBusConnection &bus);
    ~PortalScreenshot() override;

    // There as soon as the portal has answered, or left.
    [[nodiscard]] const SharedResult<End> &end() const { return m_end; }
    // Why not, for the log.
    [[nodiscard]] QString words() const { return m_words; }
    // Where the picture lies; the caller removes it. Empty for none.
    [[nodiscard]] QString takeFile() { return std::exchange(m_file, {}); }

    // Nobody wants the answer: the portal is told, what it leaves is removed, and the object goes.
    static void abandon(std::unique_ptr<PortalScreenshot> question);

private:
    void take(const PortalCall::Answer &answer);
    void finish(End end, const QString &words);

    QPointer<PortalCall> m_call;
    QString m_file;
    QString m_words;
    SharedResult<End> m_end;
    bool m_isAbandoned = false;
};

} // namespace morvane
