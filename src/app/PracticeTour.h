#pragma once

namespace morvane {

struct Presentation;
struct Storage;

// The first minute with a practice server: a model that shows what there is, and two chats to look at.
// Everything in them says that it is practice.
namespace PracticeTour {

// Adds the chats to a store that has none with messages.
void begin(Storage &storage, Presentation &presentation);

} // namespace PracticeTour

} // namespace morvane
