#include "support/WindowDriver.h"

#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QQuickItem *firstWhere(QQuickWindow *window, const std::function<bool(QQuickItem *)> &holds)
{
    const auto items = WindowDriver::allItems(window);
    const auto found = std::find_if(items.begin(), items.end(), holds);
    return found == items.end() ? nullptr : *found;
}

} // namespace

QList<QQuickItem *> WindowDriver::allItems(QQuickWindow *window)
{
    QList<QQuickItem *> items{window->contentItem()};
    for (qsizetype i = 0; i < items.size(); ++i)
        items += items.at(i)->childItems();
    return items;
}

QQuickItem *WindowDriver::anyItem(QQuickWindow *window, const QString &objectName)
{
    return firstWhere(window, [&](QQuickItem *item) { return item->objectName() == objectName; });
}

QQuickItem *WindowDriver::item(QQuickWindow *window, const QString &objectName)
{
    return firstWhere(
        window, [&](QQuickItem *item) { return item->isVisible() && item->objectName() == objectName; });
}

QQuickWindow *WindowDriver::settingsWindow(QQuickWindow *mainWindow)
{
    const auto find = [mainWindow]() -> QQuickWindow * {
        const auto windows = QGuiApplication::allWindows();
        for (QWindow *window : windows) {
            if (window != mainWindow && window->isVisible() && window->title() == "Settings"_L1)
                return qobject_cast<QQuickWindow *>(window);
        }
        return nullptr;
    };
    if (!find())
        press(mainWindow, Qt::Key_Comma, Qt::ControlModifier);
    const bool opened = eventually([&] { return find() && find()->isActive(); });
    return opened ? find() : nullptr;
}

void WindowDriver::press(QQuickWindow *window, int key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(window, static_cast<Qt::Key>(key), modifiers);
    settle();
}

void WindowDriver::type(QQuickWindow *window, const QString &text)
{
    for (const QChar character : text)
        QTest::keyClick(window, character.toLatin1());
    settle();
}

namespace {

// Scrolls as a person would who sees it nowhere.
void bringIntoView(QQuickItem *item)
{
    for (QQuickItem *view = item->parentItem(); view; view = view->parentItem()) {
        if (!view->inherits("QQuickFlickable"))
            continue;
        const double middle = item->mapToItem(view, {0, item->height() / 2}).y();
        if (middle >= 0 && middle <= view->height())
            continue;
        const double most = std::max(0.0, view->property("contentHeight").toDouble() - view->height());
        const double wanted = view->property("contentY").toDouble() + middle - view->height() / 2;
        view->setProperty("contentY", std::clamp(wanted, 0.0, most));
        WindowDriver::settle();
    }
}

} // namespace

void WindowDriver::click(QQuickItem *item)
{
    settle(); // what has just come has no place before a frame
    bringIntoView(item);
    const QPointF middle = item->mapToScene({item->width() / 2, item->height() / 2});
    QTest::mouseClick(item->window(), Qt::LeftButton, Qt::NoModifier, middle.toPoint());
    settle();
}

bool WindowDriver::eventually(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, 10'000);
}

void WindowDriver::settle()
{
    QCoreApplication::processEvents();
    const auto windows = QGuiApplication::allWindows();
    for (QWindow *each : windows) {
        auto *window = qobject_cast<QQuickWindow *>(each);
        if (!window || !window->isVisible())
            continue;
        QSignalSpy drawn(window, &QQuickWindow::frameSwapped);
        window->update();
        drawn.wait(2000);
    }
    QCoreApplication::processEvents();
}

} // namespace morvane
