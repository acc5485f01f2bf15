#pragma once
// Publishers and subscriptions: how the core tells its views what changed
// without knowing them. A model owns a Publisher<Message> per kind of change
// and publishes after the change is complete; a view subscribes and keeps the
// returned Subscription for as long as it wants to hear, so unsubscribing is
// owned by the view's scope rather than remembered at every exit.
//
// Callbacks run on the publishing thread, in subscription order. A callback
// may subscribe or unsubscribe (itself or others) while a message is being
// delivered: one cancelled during delivery is not called afterwards, one
// added during delivery first hears the next message. A Subscription may
// outlive its Publisher.
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace kestrelon {

class Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::function<void()> cancel)
        : m_cancel(std::move(cancel))
    {}
    Subscription(Subscription&& other) noexcept
        : m_cancel(std::exchange(other.m_cancel, {}))
    {}
    Subscription& operator=(Subscription&& other) noexcept
    {
        if (this != &other) {
            reset();
            m_cancel = std::exchange(other.m_cancel, {});
        }
        return *this;
    }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;
    ~Subscription() { reset(); }

    // Stops hearing now; nothing is called through this subscription afterwards.
    void reset()
    {
        if (auto cancel = std::exchange(m_cancel, {}))
            cancel();
    }
    bool active() const { return static_cast<bool>(m_cancel); }

private:
    std::function<void()> m_cancel;
};

template <typename Message>
class Publisher {
public:
    using Callback = std::function<void(const Message&)>;

    Publisher() = default;
    Publisher(const Publisher&) = delete;
    Publisher& operator=(const Publisher&) = delete;

    [[nodiscard]] Subscription subscribe(Callback callback)
    {
        auto entry = std::make_shared<Entry>(Entry{std::move(callback), true});
        m_entries->push_back(entry);
        std::weak_ptr<Entries> entries = m_entries;
        return Subscription([entries, weak = std::weak_ptr<Entry>(entry)] {
            auto list = entries.lock();
            auto self = weak.lock();
            if (!list || !self)
                return;
            self->active = false;
            std::erase(*list, self);
        });
    }

    void publish(const Message& message) const
    {
        // A copy, so callbacks may change the subscriber list while we walk it.
        const Entries snapshot = *m_entries;
        for (const auto& entry : snapshot) {
            if (entry->active)
                entry->callback(message);
        }
    }

    std::size_t subscriberCount() const { return m_entries->size(); }

private:
    struct Entry {
        Callback callback;
        bool active;
    };
    using Entries = std::vector<std::shared_ptr<Entry>>;
    std::shared_ptr<Entries> m_entries = std::make_shared<Entries>();
};

} // namespace kestrelon
