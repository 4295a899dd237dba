#pragma once
// The hourglass for a long run: set on construction, the previous cursor
// restored on destruction, so every path out of the run (errors included)
// puts it back.

namespace ui {

class WaitCursor {
public:
    WaitCursor();
    ~WaitCursor();
    WaitCursor(const WaitCursor &) = delete;
    WaitCursor &operator=(const WaitCursor &) = delete;

private:
    bool m_set = false;
};

} // namespace ui
