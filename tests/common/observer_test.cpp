#include "common/observer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace kestrelon {
namespace {

TEST(Observer, DeliversInOrderUntilTheSubscriptionGoes)
{
    Publisher<int> publisher;
    std::vector<std::string> heard;
    Subscription first = publisher.subscribe([&](int v) { heard.push_back("a" + std::to_string(v)); });
    {
        Subscription second = publisher.subscribe([&](int v) { heard.push_back("b" + std::to_string(v)); });
        publisher.publish(1);
    }
    publisher.publish(2);
    Subscription moved = std::move(first);
    publisher.publish(3);
    moved.reset();
    publisher.publish(4);
    EXPECT_EQ(heard, (std::vector<std::string>{"a1", "b1", "a2", "a3"}));
    EXPECT_EQ(publisher.subscriberCount(), 0u);
}

TEST(Observer, CallbacksMayChangeTheSubscribersWhileAMessageIsDelivered)
{
    Publisher<int> publisher;
    std::vector<std::string> heard;
    Subscription late;
    Subscription victim;
    Subscription killer = publisher.subscribe([&](int v) {
        heard.push_back("k" + std::to_string(v));
        victim.reset(); // cancelled before its turn in this very delivery
        if (!late.active())
            late = publisher.subscribe([&](int w) { heard.push_back("l" + std::to_string(w)); });
    });
    victim = publisher.subscribe([&](int v) { heard.push_back("v" + std::to_string(v)); });
    publisher.publish(1);
    publisher.publish(2);
    EXPECT_EQ(heard, (std::vector<std::string>{"k1", "k2", "l2"}));
}

TEST(Observer, ASubscriptionMayOutliveItsPublisher)
{
    Subscription keep;
    {
        auto publisher = std::make_unique<Publisher<int>>();
        keep = publisher->subscribe([](int) {});
    }
    keep.reset();
    EXPECT_FALSE(keep.active());
}

} // namespace
} // namespace kestrelon
