#pragma once

#include "tests/support/HostTest.h"

namespace Support {

/// How a change reaches the reactors: inside the mutator, or with the next turn of the activity.
enum class Delivery { isInline, isDeferred };

/// Whole hosts under a delivery. Each helper that changes something ends with a turn of the activity, and a
/// test that changes something by itself ends its step with settle(), so that one text holds for both.
class DeliveryHostTest : public HostTest {
  protected:
    explicit DeliveryHostTest( Delivery delivery, Seconds start = 1000.0 ) : HostTest( start ) {
        deferredDeliveryIs( delivery == Delivery::isDeferred );
    }

    void stepDone() override { settle(); }
};

/// The same where the delivery is the test's one parameter. tests/engine/InlineOnly.h lists what cannot run
/// under both, and why.
class DeliveryTest : public DeliveryHostTest, public ::testing::WithParamInterface<Delivery> {
  protected:
    explicit DeliveryTest( Seconds start = 1000.0 ) : DeliveryHostTest( GetParam(), start ) {}
};

inline std::string
deliveryName( Delivery delivery ) {
    return delivery == Delivery::isInline ? "Inline" : "Deferred";
}

inline auto
eitherDelivery() {
    return ::testing::Values( Delivery::isInline, Delivery::isDeferred );
}

} // namespace Support

/// Runs the tests of a suite, whose one parameter is the delivery, under either.
#define INSTANTIATE_DELIVERY_TESTS( Suite )                                                            \
    INSTANTIATE_TEST_SUITE_P( Delivery, Suite, Support::eitherDelivery(), []( auto const& instance ) { \
        return Support::deliveryName( instance.param );                                                \
    } )
