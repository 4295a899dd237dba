#pragma once
// A TCP relay on loopback between a client and the test server, for faults
// the server itself cannot be made to show: it forwards everything until it is
// armed, then acts on the next COMMIT the client sends.

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

class TcpRelay {
public:
    enum class OnCommit {
        Forward,        // nothing special
        DropReply,      // forward it, let the server answer, drop the client without the reply
        Swallow,        // never forward it; both sides dropped (the server rolls back)
        Hold,           // never forward it; the client dropped, the server's side kept open until release()
    };

    explicit TcpRelay(int serverPort);
    ~TcpRelay();

    int port() const { return m_port; }
    // Acts on the next COMMIT only; then forwards again.
    void arm(OnCommit what) { m_mode = what; }
    bool fired() const { return m_fired; }
    void resetFired() { m_fired = false; }
    // Closes the server sides kept open by Hold.
    void release();

private:
    struct Pair { int client; int server; };
    void run();
    bool pump(Pair &p, bool fromClient);

    int m_serverPort;
    int m_listen = -1;
    int m_port = 0;
    std::atomic<OnCommit> m_mode{OnCommit::Forward};
    std::atomic<bool> m_fired{false};
    std::atomic<bool> m_stop{false};
    std::mutex m_lock;
    std::vector<Pair> m_pairs;
    std::vector<int> m_held;
    std::thread m_thread;
};
