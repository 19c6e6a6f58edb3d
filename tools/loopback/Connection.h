#pragma once

#include "loopback/Exchange.h"

#include <boost/asio/ip/tcp.hpp>

#include <memory>

namespace morvane {

class Server;

// One client's connection: reads its requests one after the other and plays the answer to each. A client that
// goes away ends it, in the middle of a pause too.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    Connection(boost::asio::ip::tcp::socket socket, Server &server);

    static Work serve(std::shared_ptr<Connection> self);

private:
    // Ends the pause under way when the client closes its side. Bytes of a next request end the watch only.
    static Work watch(std::shared_ptr<Connection> self);

    // The connection goes on behind this request.
    boost::asio::awaitable<bool> answer(Request request);

    Exchange::Line m_line;
    Server &m_server;
};

} // namespace morvane
