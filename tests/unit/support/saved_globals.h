// Puts back the globals a test changes, so that no test depends on the order tests run in: a
// fixture names each global it touches with keep() before changing it, and every one is restored,
// the last kept first, by restore() or when the saved_globals goes.
#pragma once

#include <stddef.h>

#include <algorithm>
#include <functional>
#include <vector>

class saved_globals {
public:
    saved_globals() = default;
    saved_globals(const saved_globals&) = delete;
    saved_globals& operator=(const saved_globals&) = delete;
    ~saved_globals() { restore(); }

    // Remembers the global's present value.
    template <typename T> void keep(T* global)
    {
        T value = *global;
        restores_.push_back([global, value] { *global = value; });
    }
    // An array global, element by element.
    template <typename T, size_t N> void keep(T (*global)[N])
    {
        std::vector<T> value(*global, *global + N);
        restores_.push_back([global, value] { std::copy(value.begin(), value.end(), *global); });
    }
    // Each of several globals.
    template <typename... T> void keep_all(T*... globals) { (keep(globals), ...); }
    // Every kept global back to its value when kept; forgets them.
    void restore()
    {
        while (!restores_.empty()) {
            restores_.back()();
            restores_.pop_back();
        }
    }

private:
    std::vector<std::function<void()>> restores_;
};
