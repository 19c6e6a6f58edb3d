#pragma once

#include "network/HostLookup.h"
#include "network/HttpSession.h"
#include "network/PrivateNetworkAddress.h"
#include "services/WebAccessing.h"

namespace morvane {

class Work;

// Reads one page of the web as plain text. Each hop's host is judged before it is asked: by its text, then by
// the addresses that its name leads to. GUI thread; resolving and extracting run beside it.
class PageReader {
public:
    using Subnets = std::vector<PrivateNetworkAddress::Subnet> (*)();

    // `work` outlives the reader's tasks. `subnets` are those of this machine, asked for each host.
    PageReader(std::shared_ptr<HttpSession> session, HostLookup hosts, Work &work,
               Subnets subnets = PrivateNetworkAddress::machineSubnets);

    // Throws WebAccessError. A redirect that leads off https or to a private host is not followed; the
    // redirect itself is then the page that failed.
    [[nodiscard]] QCoro::Task<WebAccessing::Page> read(QString url, qsizetype limit,
                                                       std::stop_token stop) const;

private:
    // The reader may go while a page is read, so its tasks get what they need by value.
    static QCoro::Task<WebAccessing::Page> readPage(PageReader self, QString text, qsizetype limit,
                                                    std::stop_token stop);
    static QCoro::Task<HttpResponse> fetch(PageReader self, QUrl url, std::stop_token stop);
    static QCoro::Task<bool> mayFollow(PageReader self, QUrl target, std::stop_token stop);
    static QCoro::Task<bool> isPrivate(PageReader self, QString host, std::stop_token stop);

    std::shared_ptr<HttpSession> m_session;
    HostLookup m_hosts;
    Work *m_work;
    Subnets m_subnets;
};

} // namespace morvane
