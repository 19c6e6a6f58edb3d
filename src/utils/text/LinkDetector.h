#pragma once

#include <QStringView>
#include <QUrl>

#include <vector>

namespace morvane {

// Finds the links that a person would see in running text.
//
// Found are web addresses with their scheme, domain names without one whose ending is a known top-level
// domain, and e-mail addresses. A name without a scheme reads as http, an e-mail address as mailto. Not part
// of a link are the punctuation that ends a sentence, brackets that the link didn't open, and quotes around
// it. Names of files, abbreviations and version numbers are no links: an ending that is a usual file
// extension counts only behind a scheme.
//
// Takes time in proportion to the text, whatever it holds.
namespace LinkDetector {

struct Link {
    qsizetype start; // UTF-16 offset into the text
    qsizetype length;
    QUrl url; // valid, absolute

    bool operator==(const Link &) const = default;
};

// In the order of the text; links don't overlap.
[[nodiscard]] std::vector<Link> find(QStringView text);

} // namespace LinkDetector

} // namespace morvane
