#include "view_models/companion/CompanionState.h"

#include <algorithm>
#include <vector>

namespace morvane {

namespace {

using enum Companion::State;

const std::vector<Companion::State> &targetsOf(Companion::State from)
{
    // The asymmetries are meant: a speaking ghost goes through idle before it thinks or notices the pointer,
    // and a listening one never starts to speak.
    static const std::vector<std::vector<Companion::State>> table{
        {hover, listening, thinking, speaking, notification, error}, // idle
        {idle, listening, thinking, notification, error},            // hover
        {idle, thinking, error},                                     // listening
        {idle, speaking, error, notification},                       // thinking
        {idle, listening, error},                                    // speaking
        {idle, hover, listening, thinking},                          // notification
        {idle, hover, listening, thinking},                          // error
    };
    return table[static_cast<std::size_t>(from)];
}

} // namespace

bool Companion::mayMove(State from, State to)
{
    const auto &targets = targetsOf(from);
    return from == to || std::find(targets.begin(), targets.end(), to) != targets.end();
}

} // namespace morvane
