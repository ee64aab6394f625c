#pragma once

#include <coroutine>
#include <memory>
#include <optional>
#include <QCoreApplication>
#include <QMetaObject>
#include <utility>

namespace velmar {

/// A result that arrives once and that one coroutine can wait for.
///
/// The producer keeps the `Completion` and calls `complete`; the consumer awaits `result()`.
/// The waiting coroutine is resumed from the event loop, never from inside `complete`, so a
/// producer may complete from any handler without the waiting code running under its feet.
/// A producer that goes away without completing delivers its fallback, so no waiter is left
/// hanging. Unlike a signal awaited with a timeout, nothing refers to the waiter once it has
/// resumed: a late or repeated `complete` finds no one to resume.
///
/// GUI thread only (or, generally, the thread of the application's event loop).
template <typename T> class Completion
{
    struct State
    {
        std::optional<T> value;
        std::coroutine_handle<> waiter;
    };

public:
    class Awaiter
    {
    public:
        explicit Awaiter(std::shared_ptr<State> state)
            : m_state(std::move(state))
        {}
        bool await_ready() const noexcept { return m_state->value.has_value(); }
        void await_suspend(std::coroutine_handle<> waiter) noexcept { m_state->waiter = waiter; }
        T await_resume() { return *m_state->value; }

    private:
        std::shared_ptr<State> m_state;
    };

    explicit Completion(T fallback)
        : m_state(std::make_shared<State>())
        , m_fallback(std::move(fallback))
    {}
    ~Completion() { complete(m_fallback); }
    Completion(const Completion&) = delete;
    Completion& operator=(const Completion&) = delete;

    bool isComplete() const { return m_state->value.has_value(); }

    /// Delivers the result; later calls are ignored.
    void complete(T value)
    {
        if (m_state->value)
            return;
        m_state->value = std::move(value);
        if (const std::coroutine_handle<> waiter = std::exchange(m_state->waiter, {}))
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [waiter] { waiter.resume(); }, Qt::QueuedConnection);
    }

    /// What the consumer awaits. At most one coroutine may wait.
    Awaiter result() const { return Awaiter(m_state); }

private:
    std::shared_ptr<State> m_state;
    T m_fallback;
};

} // namespace velmar
