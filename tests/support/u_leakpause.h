#pragma once
// Leaves out of the leak check what is allocated while it lives. For the few
// tests that throw through Qt's own frames on purpose: Qt is built without
// unwinding, so the events it had allocated there are never freed.

#if defined(__SANITIZE_ADDRESS__)
#define QUARV_LSAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUARV_LSAN 1
#endif
#endif

#ifdef QUARV_LSAN
#include <sanitizer/lsan_interface.h>
struct LeakCheckPause {
    LeakCheckPause() { __lsan_disable(); }
    ~LeakCheckPause() { __lsan_enable(); }
    LeakCheckPause(const LeakCheckPause &) = delete;
    LeakCheckPause &operator=(const LeakCheckPause &) = delete;
};
#else
struct LeakCheckPause {
    LeakCheckPause() {}
};
#endif
