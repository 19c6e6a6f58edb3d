#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

// A failure as the code names it, on one line: tooShort("mrtd"), certificateChain(1, "certificate has
// expired"). It goes to logs and to what morvane-proof prints.
namespace CaseText {

// `payload` holds finished pieces: quoted() texts, numbers, or the text of an inner failure.
[[nodiscard]] QString of(QLatin1StringView name, const QStringList &payload = {});

// In double quotes, with JSON's escapes. Whatever could break the line or drive a terminal (controls,
// separators, invisible formatting) is escaped, so text from a server can't forge what surrounds it.
[[nodiscard]] QString quoted(QStringView text);

} // namespace CaseText

} // namespace morvane
