#include "db/u_busy.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <thread>

namespace db::busy {

namespace detail {
State g_state;
} // namespace detail

namespace {

using Clock = std::chrono::steady_clock;
// How often the watcher is called: often enough for a window that answers
// at once, rarely enough to cost nothing next to the work.
constexpr auto kInterval = std::chrono::milliseconds(20);
// Beats between two looks at the clock while watched.
constexpr int kBeatsPerLook = 256;
constexpr int kUnwatched = 1 << 30;

Clock::time_point g_lastPulse;
bool g_inPulse = false;

void callWatcher()
{
    detail::State &s = detail::g_state;
    if (!s.watcher || g_inPulse)
        return;
    g_lastPulse = Clock::now();
    g_inPulse = true;
    Progress p = s.progress;
    p.stoppable = p.stoppable && !s.held;
    try {
        s.watcher->pulse(p);
    } catch (...) {
        g_inPulse = false;
        throw;
    }
    g_inPulse = false;
}

} // namespace

void detail::beatSlow()
{
    State &s = g_state;
    if (!s.watcher) {
        s.countdown = kUnwatched;
        return;
    }
    s.countdown = kBeatsPerLook;
    if (Clock::now() - g_lastPulse >= kInterval)
        callWatcher();
}

void tick()
{
    if (detail::g_state.watcher && Clock::now() - g_lastPulse >= kInterval)
        callWatcher();
}

void pulseNow()
{
    callWatcher();
}

bool watched()
{
    return detail::g_state.watcher != nullptr;
}

bool aside(const std::function<void()> &call)
{
    if (!watched()) {
        call();
        return false;
    }
    std::atomic<bool> done{false};
    std::exception_ptr failed;
    std::thread worker([&] {
        try {
            call();
        } catch (...) {
            failed = std::current_exception();
        }
        done.store(true);
    });
    // Served as stoppable work is, so that a stop is heard and remembered.
    const Progress now = detail::g_state.progress;
    Stretch stoppable(now.phase, true, now.total);
    detail::g_state.progress.done = now.done;
    bool stopped = false;
    while (!done.load()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        try {
            if (Clock::now() - g_lastPulse >= kInterval)
                callWatcher();
        } catch (const Cancelled &) {
            stopped = true;
        } catch (...) {
            // a failing watcher is not the call's failure
        }
    }
    worker.join();
    if (failed)
        std::rethrow_exception(failed);
    return stopped;
}

WatchScope::WatchScope(Watcher *w) : m_previous(detail::g_state.watcher)
{
    detail::g_state.watcher = w;
    detail::g_state.countdown = w ? kBeatsPerLook : kUnwatched;
    // The first look at the clock calls the new watcher.
    g_lastPulse = Clock::time_point{};
}

WatchScope::~WatchScope()
{
    detail::g_state.watcher = m_previous;
    detail::g_state.countdown = m_previous ? kBeatsPerLook : kUnwatched;
}

Stretch::Stretch(Phase phase, bool stoppable, qsizetype total) : m_previous(detail::g_state.progress)
{
    detail::g_state.progress = Progress{phase, 0, total, stoppable};
}

Stretch::~Stretch()
{
    detail::g_state.progress = m_previous;
}

Unstoppable::Unstoppable() : m_previous(detail::g_state.held)
{
    detail::g_state.held = true;
}

Unstoppable::~Unstoppable()
{
    detail::g_state.held = m_previous;
}

} // namespace db::busy
