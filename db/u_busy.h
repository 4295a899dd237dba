#pragma once
// Long work on the user-interface thread (a fetch, a grid's rebuild, an
// export) beats as it goes. A watcher installed for the work in progress (a
// progress window, the exporter's signal handling) is called from a beat at
// most every few tens of milliseconds: it keeps the windows served, shows how
// far the work is, and stops it by throwing Cancelled, which only beats of a
// stoppable stretch do (a fetch, the writing of a file) and only where the
// work can be left cleanly. Without a watcher a beat costs a counter.
//
// Everything here belongs to the user-interface thread, the one thread that
// runs statements, rebuilds grids and writes files (helper threads only ever
// run one blocking call of a library, and never beat).

#include <QtGlobal>

#include <functional>

namespace db::busy {

// Thrown (through a watcher) out of a stoppable stretch the operator ended.
// Not an error: the work is undone and nothing is reported.
struct Cancelled {};

enum class Phase : quint8 {
    Working,  // a step that must run to its end (a rebuild, a write of the period)
    Fetching, // rows arriving from the server: done = rows so far
    Writing,  // a file being written: done of total rows
};

struct Progress {
    Phase phase = Phase::Working;
    qsizetype done = 0;
    qsizetype total = 0;
    bool stoppable = false;
};

class Watcher {
public:
    virtual ~Watcher() = default;
    // May throw Cancelled when progress.stoppable.
    virtual void pulse(const Progress &progress) = 0;
};

// Installs a watcher for its lifetime; the one it replaced comes back after.
class WatchScope {
public:
    explicit WatchScope(Watcher *w);
    ~WatchScope();
    WatchScope(const WatchScope &) = delete;
    WatchScope &operator=(const WatchScope &) = delete;

private:
    Watcher *m_previous;
};

// A stretch of work of one phase; on leaving it the previous phase comes back.
class Stretch {
public:
    Stretch(Phase phase, bool stoppable, qsizetype total = 0);
    ~Stretch();
    Stretch(const Stretch &) = delete;
    Stretch &operator=(const Stretch &) = delete;

private:
    Progress m_previous;
};

// Beats may not stop the work while one of these lives (cleaning up after a
// stop, say), and the watcher is still called.
class Unstoppable {
public:
    Unstoppable();
    ~Unstoppable();
    Unstoppable(const Unstoppable &) = delete;
    Unstoppable &operator=(const Unstoppable &) = delete;

private:
    bool m_previous;
};

namespace detail {
struct State {
    int countdown = 1 << 30;
    Progress progress;
    Watcher *watcher = nullptr;
    bool held = false;
};
extern State g_state;
void beatSlow();
} // namespace detail

// A beat of the work in progress; cheap enough for every row or comparison.
inline void beat()
{
    if (--detail::g_state.countdown <= 0)
        detail::beatSlow();
}
// The same, saying how far it is.
inline void beat(qsizetype done)
{
    detail::g_state.progress.done = done;
    beat();
}
// A beat of coarse work (a block sorted, a chunk copied): looks at the clock
// every time.
void tick();
// Calls the watcher now, whatever the time since the last call (a wait on
// the server, which is not counted in beats).
void pulseNow();
// True while a watcher is installed.
bool watched();

// Runs one call that cannot be split (a library packing a file, a file's
// sync to disk) on a thread of its own while the watcher is served, and
// raises whatever the call threw. True when a stop was asked meanwhile: the
// caller decides whether it still can stop. Unwatched, the call runs here.
bool aside(const std::function<void()> &call);

} // namespace db::busy
