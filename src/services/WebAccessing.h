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

    // Who would answer a search now.
    enum class SearchService {
        none,
        personsOwn, // by a key of theirs, also when it can't be read just now
        builtIn,
    };
    [[nodiscard]] virtual SearchService searchService() const = 0;

    // The two throw WebAccessError; cancellation through `stop` is WebAccessError::Plain::cancelled. A search
    // also throws KeychainError when the person's own key can't be read: its words go to no other service.
    [[nodiscard]] virtual QCoro::Task<std::vector<SearchResult>> search(QString query,
                                                                        std::stop_token stop) = 0;

    // At most `limit` characters of the page's text.
    [[nodiscard]] virtual QCoro::Task<Page> readPage(QString url, qsizetype limit, std::stop_token stop) = 0;
};

} // namespace morvane
