#include "platform/linux/AudioThread.h"

namespace morvane {

using namespace Qt::StringLiterals;

AudioThread::~AudioThread()
{
    m_thread.quit();
    m_thread.wait();
}

void AudioThread::take(QObject *object)
{
    if (!m_owner) {
        m_owner = new QObject;
        m_owner->moveToThread(&m_thread);
        QObject::connect(&m_thread, &QThread::finished, m_owner, &QObject::deleteLater);
        m_thread.setObjectName(u"audio"_s);
        m_thread.start(QThread::HighPriority);
    }
    object->moveToThread(&m_thread);
    QMetaObject::invokeMethod(object, [object, owner = m_owner] { object->setParent(owner); });
}

} // namespace morvane
