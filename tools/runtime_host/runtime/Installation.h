#pragma once

#include <QJsonObject>
#include <QString>

namespace morvane {

// The folder that this program was unpacked into, as its archive made it.
namespace Installation {

// This program's file.
[[nodiscard]] QString binary();

// lib/ollama/practice.json: what the maker of the archive had to say. Empty outside an installation.
[[nodiscard]] QJsonObject practice();

// Every file that practice.json lists ("contents": path to SHA-256) is there and is what it was. So a
// program that runs from half an installation, or from one that was changed, tells on whoever started it.
[[nodiscard]] bool isWhole();

} // namespace Installation

} // namespace morvane
