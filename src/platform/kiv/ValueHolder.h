#pragma once

#include <concepts>

#include "platform/kiv/PtrInterface.h"

namespace Kiv {

/// A value of several fields as an object, so that a table of attributes serves it like an entity. The value
/// never changes.
template <class T>
class ValueHolder : public PtrInterface {
  public:
    explicit ValueHolder( T const& value ) : value_( value ) {}

    T const& value() const { return value_; }

  private:
    T const value_;
};

/// What a row's accessors are called on: the object itself, or the value in its holder.
template <class T>
T const&
objectAs( PtrInterface const& object ) {
    if constexpr ( std::derived_from<T, PtrInterface> ) {
        return static_cast<T const&>( object );
    } else {
        return static_cast<ValueHolder<T> const&>( object ).value();
    }
}

} // namespace Kiv
