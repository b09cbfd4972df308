#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace Kiv {

/// A borrowed callable for the length of one call: no allocation, no ownership.
template <class Signature>
class FunctionRef;

template <class R, class... Args>
class FunctionRef<R( Args... )> {
  public:
    template <class F>
    requires( !std::is_same_v<std::remove_cvref_t<F>, FunctionRef> && std::is_invocable_r_v<R, F&, Args...> )
        FunctionRef( F&& f )
        : callable_( const_cast<void*>( static_cast<void const*>( std::addressof( f ) ) ) ),
          call_( []( void* callable, Args... args ) -> R {
              return ( *static_cast<std::remove_reference_t<F>*>( callable ) )( std::forward<Args>( args )...
              );
          } ) {}

    R operator()( Args... args ) const { return call_( callable_, std::forward<Args>( args )... ); }

  private:
    void* callable_;
    R ( *call_ )( void*, Args... );
};

} // namespace Kiv
