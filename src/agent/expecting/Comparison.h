#pragma once

#include <span>

#include "platform/kiv/Value.h"

namespace Agent {

/// What a value is to be: "2", "== 2", "!= 2", and for numbers "< 2", "<= 2", "> 2" and ">= 2".
class Comparison {
  public:
    /// With a value of that type. Raises RangeException that says what was expected and found.
    Comparison( Kiv::ValueType const& type, std::string_view text );

    /// `value` must be of the type.
    bool holds( std::any const& value ) const;
    /// For a number that may be greater than one value, such as a sum.
    bool holdsFor( double number ) const;
    /// As in a scenario, such as ">= 2"; the value alone where it is to be equal.
    std::string text() const;

  private:
    enum class Relation { equal, notEqual, less, atMost, greater, atLeast };

    struct Sign {
        std::string_view text;
        Relation relation;
    };

    static std::span<Sign const> signs();
    bool isNumber() const;
    double numberOf( std::any const& value ) const;

    Kiv::ValueType const* type_;
    Relation relation_ = Relation::equal;
    std::any value_;
};

} // namespace Agent
