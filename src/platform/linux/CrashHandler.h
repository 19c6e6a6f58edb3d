#pragma once

#include <QString>

namespace morvane {

// Writes down where the program was when it crashed: which signal, when, and the calls that led there as
// modules and offsets in them. Nothing that stood in memory is in a report: no text, no value, no address of
// data, and of an exception only its type. Core files stay off (ProcessPrivacy).
//
// What runs in the crashed process calls the kernel, the lock-free part of the dynamic loader and the
// unwinder, and allocates nothing. It runs on a stack of its own (CrashStack), since the thread's may be
// full.
namespace CrashHandler {

// Once, on the main thread, before others are started. `folder` is made if need be, mode 0700; a report there
// is `crash-SECONDS-PROCESS.txt`, mode 0600, and beside `kept` of them the oldest gives way. Under a
// sanitizer, which tells of crashes itself, nothing is done.
void install(const QString &folder, int kept);

// Whether install() does anything in this build.
[[nodiscard]] bool isPossible();

} // namespace CrashHandler

} // namespace morvane
