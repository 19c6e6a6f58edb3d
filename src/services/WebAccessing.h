#pragma once

#include <QCoroTask>
#include <QString>

#include <optional>
#include <stop_token>
#include <vector>

namespace morvane {

// The web, as the abilities use it. GUI thread.
class WebAccessing {
public:
    struct SearchResult {
        QString title;
        QString url;
        QString snippet;
        std::optional<QString> thumbnailURL; // https only

        bool operator==(const SearchResult &) const = default;
    };

    struct Page {
        QString title;
        QString text;

        bool operator==(const Page &) const = default;
    };

    virtual ~WebAccessing() = default;

    // The two throw WebAccessError; cancellation through `stop` is WebAccessError::Plain::cancelled.
    [[nodiscard]] virtual QCoro::Task<std::vector<SearchResult>> search(QString query,
                                                                        std::stop_token stop) = 0;

    // At most `limit` characters of the page's text.
    [[nodiscard]] virtual QCoro::Task<Page> readPage(QString url, qsizetype limit, std::stop_token stop) = 0;
};

} // namespace morvane
