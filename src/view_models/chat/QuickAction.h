#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// What can be asked of an attachment or a draft without writing a word. An enumeration with a QML face of its
// own; the order is the menu's.
namespace QuickActions {
Q_NAMESPACE
QML_NAMED_ELEMENT(QuickActions)

enum class Action { summarize, explain, rewrite, draftReply, extractActions };
Q_ENUM_NS(Action)

[[nodiscard]] QString labelOf(Action action);

// What the model is told.
[[nodiscard]] QString instructionOf(Action action);

} // namespace QuickActions

using QuickAction = QuickActions::Action;

} // namespace morvane
