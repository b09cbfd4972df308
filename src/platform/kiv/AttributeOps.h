#pragma once

#include <any>
#include <memory>

#include "platform/kiv/HashMap.h"
#include "platform/kiv/Value.h"
#include "platform/kiv/ValueHolder.h"

namespace Kiv {

/// What may be done from outside with an attribute that holds an object. What the class does not offer is
/// null.
struct PointerOps {
    Ptr<PtrInterface> ( *read )( PtrInterface const& owner );
    /// Returns false, with nothing done, for an object of another type.
    bool ( *write )( PtrInterface& owner, Ptr<PtrInterface> const& object ) = nullptr;
    Ptr<PtrInterface> ( *create )( PtrInterface& owner ) = nullptr;
    void ( *del )( PtrInterface& owner ) = nullptr;
};

/// A place in a walk over a collection. It survives the removal of any member, that under it included.
class CollectionCursor {
  public:
    virtual ~CollectionCursor() = default;

    virtual bool isAtMember() const = 0;
    virtual void next() = 0;
    virtual std::unique_ptr<CollectionCursor> clone() const = 0;
    virtual std::any key() const = 0;
    virtual Ptr<PtrInterface> member() const = 0;
};

/// The same for a collection. Keys are of the row's key type.
struct CollectionOps {
    ValueType const* valueType; ///< of a collection of values, else null
    std::size_t ( *count )( PtrInterface const& owner );
    U32 ( *generation )( PtrInterface const& owner );
    Ptr<PtrInterface> ( *find )( PtrInterface const& owner, std::any const& key ); ///< the member, or null
    std::any ( *value )( PtrInterface const& member );                             ///< of a value collection
    std::unique_ptr<CollectionCursor> ( *begin )( PtrInterface const& owner );
    std::unique_ptr<CollectionCursor> ( *startAt )( PtrInterface const& owner, std::any const& key );
    void ( *create )( PtrInterface& owner, std::any const& key, std::any const& value );
    void ( *del )( PtrInterface& owner, std::any const& key );
};

/// A pointer to an object of any class as one that may change it; the views keep track of what is const.
template <class P>
Ptr<PtrInterface>
anyPtr( P const& pointer ) {
    if constexpr ( std::is_pointer_v<P> ) {
        return const_cast<PtrInterface*>( static_cast<PtrInterface const*>( pointer ) );
    } else {
        return anyPtr( pointer.get() );
    }
}

template <class Reader>
struct ReaderTraits;
template <class C, class T>
struct ReaderTraits<T ( C::* )() const> {
    using Class = C;
    using Value = std::remove_cvref_t<T>;
};
template <class Operation>
struct OperationTraits;
template <class C, class T>
struct OperationTraits<void ( C::* )( T )> {
    using Class = C;
    using Argument = std::remove_cvref_t<T>;
};
template <class Mutator>
struct PointerMutatorTraits;
template <class C, class T>
struct PointerMutatorTraits<void ( C::* )( Ptr<T> const& )> {
    using Object = T;
};

template <auto reader>
Ptr<PtrInterface>
readPointer( PtrInterface const& owner ) {
    using Class = typename ReaderTraits<decltype( reader )>::Class;
    return anyPtr( ( objectAs<Class>( owner ).*reader )() );
}

template <auto reader, auto mutator>
bool
writePointer( PtrInterface& owner, Ptr<PtrInterface> const& object ) {
    using Class = typename ReaderTraits<decltype( reader )>::Class;
    using Object = typename PointerMutatorTraits<decltype( mutator )>::Object;
    auto* const typed = dynamic_cast<Object*>( object.get() );
    if ( object && !typed ) {
        return false;
    }
    ( static_cast<Class&>( owner ).*mutator )( typed );
    return true;
}

template <auto reader>
inline constexpr PointerOps fixedPointerOps{ &readPointer<reader> };

template <auto reader, auto mutator>
inline constexpr PointerOps pointerOps{ &readPointer<reader>, &writePointer<reader, mutator> };

template <auto reader, auto creator, auto deleter>
inline constexpr PointerOps containedOps{
    &readPointer<reader>,
    nullptr,
    []( PtrInterface& owner ) {
        using Class = typename ReaderTraits<decltype( reader )>::Class;
        return anyPtr( ( static_cast<Class&>( owner ).*creator )() );
    },
    []( PtrInterface& owner ) {
        using Class = typename ReaderTraits<decltype( reader )>::Class;
        ( static_cast<Class&>( owner ).*deleter )();
    },
};

template <class Map>
struct MapTraits;
template <class M, class K>
struct MapTraits<HashMap<M, K>> {
    using Member = M;
    using Key = K;
};

/// The operations of a collection, from a class that names it:
///     using Class = …;                                        whose collection it is
///     static HashMap<…> const& members( Class const& );
/// and, where the collection has them,
///     static void is( Class&, Key const& ), or is( Class&, Key const&, Value ) for values
///     static void del( Class&, Key const& );
///     using Value = …; static Value value( Member const& );
///     using Key = …; static … mapKey( Key ); static Key key( Member const& )   where outside has another key
///     static … object( Member const& )   where a member only stands for the object that it holds
template <class C>
class Collection {
  public:
    using Map = std::remove_cvref_t<decltype( C::members( std::declval<typename C::Class const&>() ) )>;
    using Member = typename MapTraits<Map>::Member;
    static constexpr bool hasOwnKey = requires { typename C::Key; };
    static constexpr bool hasValues = requires { typename C::Value; };

    template <class T>
    struct KeyOf {
        using type = typename MapTraits<Map>::Key;
    };
    template <class T>
    requires requires { typename T::Key; }
    struct KeyOf<T> {
        using type = typename T::Key;
    };
    using Key = typename KeyOf<C>::type;

    class Cursor : public CollectionCursor {
      public:
        explicit Cursor( typename Map::Iterator const& at ) : at_( at ) {}

        bool isAtMember() const override { return static_cast<bool>( at_ ); }
        void next() override { ++at_; }
        std::unique_ptr<CollectionCursor> clone() const override { return std::make_unique<Cursor>( at_ ); }
        std::any key() const override { return keyOf( *at_ ); }
        Ptr<PtrInterface> member() const override { return shown( at_.ptr().get() ); }

      private:
        typename Map::Iterator at_;
    };

    static constexpr CollectionOps ops() {
        CollectionOps all{};
        all.count = []( PtrInterface const& owner ) { return map( owner ).size(); };
        all.generation = []( PtrInterface const& owner ) { return map( owner ).generation(); };
        all.find = []( PtrInterface const& owner, std::any const& key ) {
            return shown( map( owner ).find( mapKey( key ) ) );
        };
        all.begin = []( PtrInterface const& owner ) { return cursor( map( owner ).begin() ); };
        all.startAt = []( PtrInterface const& owner, std::any const& key ) {
            return cursor( map( owner ).startAtHash( mapKey( key ) ) );
        };
        if constexpr ( hasValues ) {
            all.valueType = &valueType<typename C::Value>;
            all.value = []( PtrInterface const& member ) {
                return std::any( C::value( static_cast<Member const&>( member ) ) );
            };
        }
        if constexpr ( requires { &C::is; } ) {
            all.create = &create;
        }
        if constexpr ( requires { &C::del; } ) {
            all.del = []( PtrInterface& owner, std::any const& key ) {
                C::del( static_cast<typename C::Class&>( owner ), std::any_cast<Key const&>( key ) );
            };
        }
        return all;
    }

  private:
    static Map const& map( PtrInterface const& owner ) {
        return C::members( static_cast<typename C::Class const&>( owner ) );
    }
    static std::unique_ptr<CollectionCursor> cursor( typename Map::Iterator const& at ) {
        return std::make_unique<Cursor>( at );
    }
    static Ptr<PtrInterface> shown( Member* member ) {
        if constexpr ( requires { &C::object; } ) {
            return member ? anyPtr( C::object( *member ) ) : nullptr;
        } else {
            return anyPtr( member );
        }
    }
    static auto mapKey( std::any const& key ) {
        if constexpr ( hasOwnKey ) {
            return C::mapKey( std::any_cast<Key const&>( key ) );
        } else {
            return std::any_cast<Key const&>( key );
        }
    }
    static Key keyOf( Member const& member ) {
        if constexpr ( hasOwnKey ) {
            return C::key( member );
        } else {
            return member.fwkKey();
        }
    }
    static void create( PtrInterface& owner, std::any const& key, std::any const& value ) {
        auto& typed = static_cast<typename C::Class&>( owner );
        if constexpr ( hasValues ) {
            C::is(
                typed, std::any_cast<Key const&>( key ), std::any_cast<typename C::Value const&>( value )
            );
        } else {
            C::is( typed, std::any_cast<Key const&>( key ) );
        }
    }
};

template <class C>
inline constexpr CollectionOps collectionOps = Collection<C>::ops();

} // namespace Kiv
