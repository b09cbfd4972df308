#pragma once

#include "platform/kiv/Entity.h"

namespace Kiv {

/// A directory: an entity that holds others, each under its own name. A name is taken by one child at most.
class Dir : public Entity {
  public:
    explicit Dir( Name const& name ) : Entity( name ) {}
    ~Dir() override;

    /// The child of that name, or null.
    Ptr<Entity> entry( Name const& name ) const;
    std::size_t entries() const { return entries_.size(); }
    /// Takes a child in. Raises NameInUseException where another child has its name.
    void entryIs( Ptr<Entity> const& child );
    void entryDel( Name const& name );

  private:
    struct Entry : PtrInterface, HashMember {
        explicit Entry( Ptr<Entity> const& entity ) : child( entity ) {}
        Name const& fwkKey() const { return child->name(); }

        Ptr<Entity> const child;
    };

    HashMap<Entry, Name> entries_;
};

} // namespace Kiv
