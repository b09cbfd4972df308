#pragma once

#include "platform/kiv/Entity.h"

namespace Kiv {

/// A reactor that carries an entity's changes to a stream. It is told before every other reactor, of every
/// attribute, whatever the class.
class StreamAdapter : public Entity::NotifieeConst {
  public:
    /// What an entity owes its stream.
    enum class SyncMode : U8 {
        changes,  ///< nothing but its changes
        fresh,    ///< everything that is not as in a new entity
        complete, ///< everything, whatever the peer holds
    };

    bool isStreamAdapter() const override { return true; }
    bool isGeneric() const override { return true; }

  protected:
    explicit StreamAdapter( Ptr<Entity const> const& entity ) : Entity::NotifieeConst( entity ) {}
};

} // namespace Kiv
