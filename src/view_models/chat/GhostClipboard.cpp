#include "view_models/chat/GhostClipboard.h"

#include "view_models/chat/GhostDesk.h"

#include <QMimeData>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString hint = u"x-kde-passwordManagerHint"_s; // which managers of several desktops heed

// The data of other programs are of types of the platform's.
bool isOurs(const QMimeData &data)
{
    return data.metaObject() == &QMimeData::staticMetaObject;
}

} // namespace

GhostClipboard::GhostClipboard(const GhostDesk &ghosts, QClipboard &clipboard, QObject *parent)
    : QObject(parent)
    , m_ghosts(ghosts)
    , m_clipboard(clipboard)
{
    connect(&clipboard, &QClipboard::changed, this, &GhostClipboard::mark);
}

// Before the event loop turns, so that nobody has been answered without the mark.
void GhostClipboard::mark(QClipboard::Mode mode)
{
    const QMimeData *copied = m_clipboard.mimeData(mode);
    if (!m_ghosts.isOn() || !copied || !isOurs(*copied) || copied->formats().isEmpty() ||
        copied->hasFormat(hint))
        return;
    auto marked = std::make_unique<QMimeData>();
    for (const QString &format : copied->formats())
        marked->setData(format, copied->data(format));
    marked->setData(hint, "secret");
    m_clipboard.setMimeData(marked.release(), mode);
}

} // namespace morvane
