#include "views/PasteLimit.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>

#include <optional>

namespace morvane {

namespace {

constexpr auto order = HandedOver::Order::textFirst;

std::optional<QClipboard::Mode> pastedBy(const QEvent &event)
{
    switch (event.type()) {
    case QEvent::KeyPress:
        if (static_cast<const QKeyEvent &>(event).matches(QKeySequence::Paste))
            return QClipboard::Clipboard;
        break;
    case QEvent::MouseButtonRelease:
        if (static_cast<const QMouseEvent &>(event).button() == Qt::MiddleButton)
            return QClipboard::Selection;
        break;
    default:
        break;
    }
    return std::nullopt;
}

bool isTooLong(QClipboard::Mode mode)
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData(mode);
    return data && !HandedOver::holdsAttachment(*data, order) && HandedOver::isTooLong(data->text());
}

} // namespace

void PasteLimit::setField(QQuickItem *field)
{
    if (m_field == field)
        return;
    if (m_field)
        m_field->removeEventFilter(this);
    m_field = field;
    if (field)
        field->installEventFilter(this);
    Q_EMIT fieldChanged();
}

bool PasteLimit::isExceeded() const
{
    return isTooLong(QClipboard::Clipboard);
}

bool PasteLimit::eventFilter(QObject *, QEvent *event)
{
    const auto mode = pastedBy(*event);
    if (!mode || !isTooLong(*mode))
        return false;
    Q_EMIT exceeded(HandedOver::of(*QGuiApplication::clipboard()->mimeData(*mode), order));
    return true;
}

} // namespace morvane
