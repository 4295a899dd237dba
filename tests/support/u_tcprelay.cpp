#include "tests/support/u_tcprelay.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace {

sockaddr_in loopback(int port)
{
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<uint16_t>(port));
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return a;
}

bool sendAll(int fd, const char *p, size_t n)
{
    while (n > 0) {
        const ssize_t w = ::send(fd, p, n, MSG_NOSIGNAL);
        if (w <= 0)
            return false;
        p += w;
        n -= size_t(w);
    }
    return true;
}

} // namespace

TcpRelay::TcpRelay(int serverPort) : m_serverPort(serverPort)
{
    m_listen = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a = loopback(0);
    if (m_listen < 0 || ::bind(m_listen, reinterpret_cast<sockaddr *>(&a), sizeof a) != 0 || ::listen(m_listen, 16) != 0)
        throw std::runtime_error("relay: cannot listen");
    socklen_t len = sizeof a;
    ::getsockname(m_listen, reinterpret_cast<sockaddr *>(&a), &len);
    m_port = ntohs(a.sin_port);
    m_thread = std::thread([this] { run(); });
}

TcpRelay::~TcpRelay()
{
    m_stop = true;
    m_thread.join();
    release();
    for (const Pair &p : m_pairs) {
        ::close(p.client);
        ::close(p.server);
    }
    ::close(m_listen);
}

void TcpRelay::release()
{
    std::lock_guard g(m_lock);
    for (int fd : m_held)
        ::close(fd);
    m_held.clear();
}

// Moves what one side has to the other; false when the pair is done.
bool TcpRelay::pump(Pair &p, bool fromClient)
{
    char buf[65536];
    const ssize_t n = ::recv(fromClient ? p.client : p.server, buf, sizeof buf, 0);
    if (n <= 0)
        return false;
    const OnCommit mode = m_mode;
    if (fromClient && mode != OnCommit::Forward
        && std::string_view(buf, size_t(n)).find(std::string_view("commit\0", 7)) != std::string_view::npos) {
        m_mode = OnCommit::Forward;
        m_fired = true;
        if (mode == OnCommit::DropReply) {
            sendAll(p.server, buf, size_t(n));
            // The server has the COMMIT; wait for its answer, which the client never gets.
            pollfd w{p.server, POLLIN, 0};
            ::poll(&w, 1, 5000);
        } else if (mode == OnCommit::Hold) {
            std::lock_guard g(m_lock);
            m_held.push_back(p.server);
            ::close(p.client);
            p.client = p.server = -1;
            return false;
        }
        ::close(p.client);
        ::close(p.server);
        p.client = p.server = -1;
        return false;
    }
    return sendAll(fromClient ? p.server : p.client, buf, size_t(n));
}

void TcpRelay::run()
{
    while (!m_stop) {
        std::vector<pollfd> fds{{m_listen, POLLIN, 0}};
        for (const Pair &p : m_pairs) {
            fds.push_back({p.client, POLLIN, 0});
            fds.push_back({p.server, POLLIN, 0});
        }
        if (::poll(fds.data(), fds.size(), 50) <= 0)
            continue;
        if (fds[0].revents & POLLIN) {
            const int c = ::accept(m_listen, nullptr, nullptr);
            const int s = ::socket(AF_INET, SOCK_STREAM, 0);
            const sockaddr_in a = loopback(m_serverPort);
            if (c >= 0 && s >= 0 && ::connect(s, reinterpret_cast<const sockaddr *>(&a), sizeof a) == 0) {
                m_pairs.push_back({c, s});
            } else {
                ::close(c);
                ::close(s);
            }
        }
        const size_t polled = (fds.size() - 1) / 2;
        std::vector<Pair> keep;
        for (size_t i = 0; i < polled; ++i) {
            Pair p = m_pairs[i];
            bool alive = true;
            const pollfd &cf = fds[1 + 2 * i];
            const pollfd &sf = fds[2 + 2 * i];
            if (cf.revents & (POLLIN | POLLHUP | POLLERR))
                alive = pump(p, true);
            if (alive && (sf.revents & (POLLIN | POLLHUP | POLLERR)))
                alive = pump(p, false);
            if (alive) {
                keep.push_back(p);
            } else if (p.client >= 0) {
                ::close(p.client);
                ::close(p.server);
            }
        }
        // Pairs accepted in this round were not polled yet.
        for (size_t i = polled; i < m_pairs.size(); ++i)
            keep.push_back(m_pairs[i]);
        m_pairs = std::move(keep);
    }
}
