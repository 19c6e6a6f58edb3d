#include "platform/linux/PortalScreenshot.h"

#include <QFile>
#include <QUrl>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

PortalScreenshot::End endOf(const PortalCall::Answer &answer)
{
    using End = PortalScreenshot::End;
    if (answer.error.type() == QDBusError::Disconnected)
        return End::BusGone;
    if (answer.end == PortalCall::End::noPortal) // or one that has nobody to take pictures
        return End::Absent;
    const bool isDenial = answer.error.type() == QDBusError::AccessDenied ||
                          answer.error.name() == "org.freedesktop.portal.Error.NotAllowed"_L1;
    return isDenial ? End::Refused : End::Failed;
}

} // namespace

PortalScreenshot::PortalScreenshot(const QDBusConnection &bus)
    : m_call(new PortalCall(
          bus, u"org.freedesktop.portal.Screenshot"_s, u"Screenshot"_s, {QString()},
          {{u"interactive"_s, false}, {u"modal"_s, false}},
          [this](const PortalCall::Answer &answer) { take(answer); }, this))
{}

PortalScreenshot::~PortalScreenshot()
{
    if (!m_file.isEmpty())
        QFile::remove(m_file);
}

void PortalScreenshot::take(const PortalCall::Answer &answer)
{
    const QUrl place(answer.results.value(u"uri"_s).toString());
    if (place.isLocalFile())
        m_file = place.toLocalFile();
    switch (answer.end) {
    case PortalCall::End::done:
        return m_file.isEmpty() ? finish(End::Failed, u"the portal named no file"_s) : finish(End::Taken, {});
    case PortalCall::End::dismissed:
    case PortalCall::End::declined:
        return finish(End::Refused, u"the portal refused"_s);
    case PortalCall::End::failed:
    case PortalCall::End::noPortal:
        return finish(endOf(answer), answer.error.isValid() ? answer.error.name() : u"the portal is gone"_s);
    }
}

void PortalScreenshot::finish(End end, const QString &words)
{
    m_words = words;
    if (m_isAbandoned)
        deleteLater();
    m_end.resolve(end);
}

void PortalScreenshot::abandon(std::unique_ptr<PortalScreenshot> question)
{
    if (question->m_end.isThere())
        return;
    question->m_isAbandoned = true;
    auto *left = question.release(); // goes with the answer
    left->m_call->close();
}

} // namespace morvane
