#include "SearchAnswers.h"

#include <QJsonArray>
#include <QUrl>
#include <QUrlQuery>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString queryOf(const Request &request)
{
    const QUrlQuery query(QUrl::fromEncoded(request.target));
    return query.queryItemValue(u"q"_s, QUrl::FullyDecoded);
}

} // namespace

bool SearchAnswers::answers(const Request &request)
{
    return request.method == "GET" && request.path() == "/v1/search";
}

QJsonObject SearchAnswers::answer(const Request &request)
{
    const QString query = queryOf(request);
    QJsonArray results;
    const bool findsSome = !query.contains(u"nothing"_s, Qt::CaseInsensitive);
    for (const auto &host : {u"ferns.invalid"_s, u"garden.invalid"_s, u"moss.invalid"_s}) {
        if (findsSome)
            results += QJsonObject{{u"title"_s, u"<b>%1</b> on %2"_s.arg(query, host)},
                                   {u"url"_s, u"https://%1/the-practice-page"_s.arg(host)},
                                   {u"snippet"_s, u"What %1 has about it."_s.arg(host)}};
    }
    return {{u"results"_s, results}};
}

} // namespace morvane
