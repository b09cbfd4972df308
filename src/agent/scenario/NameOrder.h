#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kiv/Types.h"

namespace Agent {

using Kiv::U32;

/// Names in order, each with what it stands for. Those that begin alike stand together and are found in
/// logarithmic time.
class NameOrder {
  public:
    struct Named {
        std::string name;
        U32 number;
    };

    /// Names that are alike stay in the order in which they were added.
    explicit NameOrder( std::vector<Named> names );

    std::span<Named const> startingWith( std::string_view begin ) const;

  private:
    std::vector<Named> const names_;
};

} // namespace Agent
