#pragma once

#include <QString>
#include <QUrl>

namespace morvane {

// A file that the person chose in a dialog.
namespace ChosenFile {

// Qt's own dialog leaves out the scheme where a name was typed.
[[nodiscard]] inline QString path(const QUrl &file)
{
    return file.scheme().isEmpty() ? file.path() : file.toLocalFile();
}

} // namespace ChosenFile

} // namespace morvane
