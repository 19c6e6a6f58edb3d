#pragma once

#include <gio/gio.h>

#include <memory>
#include <stop_token>
#include <type_traits>

namespace morvane::GLib {

struct Unreference {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using Reference = std::unique_ptr<T, Unreference>;

// Takes over a reference that a function has given.
template <typename T>
[[nodiscard]] Reference<T> taken(T *object)
{
    return Reference<T>(object);
}

struct FreeText {
    void operator()(char *text) const { g_free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

// Where a call leaves what went wrong.
class Failure {
public:
    Failure() = default;
    ~Failure() { g_clear_error(&m_error); }
    Failure(const Failure &) = delete;
    Failure &operator=(const Failure &) = delete;

    [[nodiscard]] GError **place()
    {
        g_clear_error(&m_error);
        return &m_error;
    }
    [[nodiscard]] bool is(GQuark domain, int code) const { return g_error_matches(m_error, domain, code); }
    [[nodiscard]] const char *words() const { return m_error ? m_error->message : ""; }

private:
    GError *m_error = nullptr;
};

// Calls that take its handle end early once it is cancelled, from any thread.
class Cancellation {
public:
    Cancellation()
        : m_handle(g_cancellable_new())
    {}

    [[nodiscard]] GCancellable *handle() const { return m_handle.get(); }
    void cancel() const { g_cancellable_cancel(m_handle.get()); }

private:
    Reference<GCancellable> m_handle;
};

// What the libraries tell by signals stays on this thread, and goes with this object: without it the GUI's
// event loop would hand it out.
class OwnContext {
public:
    OwnContext()
        : m_context(g_main_context_new())
    {
        g_main_context_push_thread_default(m_context);
    }
    ~OwnContext()
    {
        while (g_main_context_iteration(m_context, FALSE)) {
        }
        g_main_context_pop_thread_default(m_context);
        g_main_context_unref(m_context);
    }
    OwnContext(const OwnContext &) = delete;
    OwnContext &operator=(const OwnContext &) = delete;

private:
    GMainContext *m_context;
};

} // namespace morvane::GLib
