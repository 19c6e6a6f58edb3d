#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// What the ghost is doing. An enumeration with a QML face of its own.
namespace Companion {
Q_NAMESPACE
QML_NAMED_ELEMENT(Companion)

enum class State { idle, hover, listening, thinking, speaking, notification, error };
Q_ENUM_NS(State)

// A move to the same state is allowed; any other must stand in the table of the current state.
[[nodiscard]] bool mayMove(State from, State to);

} // namespace Companion

using CompanionState = Companion::State;

} // namespace morvane
