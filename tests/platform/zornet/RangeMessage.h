#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/kiv/Exception.h"

namespace Zornet {

/// The text of the RangeException that `call` raises; a failure where it raises none.
template <class Call>
std::string
rangeMessage( Call call ) {
    try {
        call();
    } catch ( Kiv::RangeException const& exception ) {
        return exception.what();
    }
    ADD_FAILURE() << "no RangeException";
    return {};
}

} // namespace Zornet
