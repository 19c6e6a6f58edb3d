#pragma once

#include <QStringView>

namespace morvane {

namespace TopLevelDomains {

// Whether a name that ends in this label is likely meant as a domain name. The label is compared without
// regard to case. Country domains that double as file extensions are left out.
[[nodiscard]] bool contains(QStringView label);

} // namespace TopLevelDomains

} // namespace morvane
