// State without globals: what this thread works on at the moment.
#pragma once

#include <utility>

namespace quarl
{

/// Makes an object the current T of this thread as long as this lives; the one before is current
/// again afterwards. Whoever owns state makes it current while its code runs, so that two owners
/// never mix theirs.
template <class T> class Current
{
public:
    explicit Current(T &object) : before_(std::exchange(object_, &object)) {}
    Current(const Current &) = delete;
    Current &operator=(const Current &) = delete;
    ~Current() { object_ = before_; }

    /// There must be one.
    [[nodiscard]] static T &get() { return *object_; }
    /// Null when there is none.
    [[nodiscard]] static T *find() { return object_; }

private:
    T *before_;
    static inline constinit thread_local T *object_ = nullptr;
};

} // namespace quarl
